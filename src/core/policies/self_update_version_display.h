// The version of this program as people know it, where its label tells only a build number. Compares nothing.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/task.h"
#include "core/preferences/preference_manager.h"
#include "platform/clock.h"
#include "platform/http_client.h"

namespace corvane {

struct SelfUpdateVersionDisplay {
  static constexpr Duration kFreshFor = std::chrono::days(1);  // releases do not change their names
  static constexpr Duration kTimeLimit = 15s;                  // an update may wait so long for its name

  struct Services {
    PreferenceManager& preferences;
    HttpClient& http;
    const Clock& clock;
  };

  // Digits and nothing else.
  [[nodiscard]] static bool isBuildNumber(std::string_view version);

  // "4.2 (1234)"; the one that is known when the other is absent or the same, and absent for none.
  [[nodiscard]] static std::optional<std::string> combined(const std::optional<std::string>& shortVersion,
                                                           const std::optional<std::string>& build);

  // The form in which a list of releases names the build, "4.2 (1234)". The list is an array of objects; of the first
  // one whose "name" or "tag_name" holds the build as a number of its own, the version is the first text with dots
  // among its numbers in "tag_name", else in "name". Absent for a damaged list and for a build it does not name.
  [[nodiscard]] static std::optional<std::string> displayIn(std::string_view releases, std::string_view build);

  // What was last found for this build, however long ago.
  [[nodiscard]] static std::optional<std::string> cachedDisplay(std::string_view build,
                                                                const PreferenceManager& preferences);

  // Looks the build up in the list at SelfUpdateReleaseListURL and keeps what it finds. Absent without such an address,
  // a network or a release of that build. What was found within the last day is answered without asking, and then, as
  // without an address, before this returns; otherwise `done` runs in a later turn. Main thread; the services outlive
  // the answer.
  static void refresh(std::string build, Services services, Completion<std::optional<std::string>> done);
};

}  // namespace corvane
