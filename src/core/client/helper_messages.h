// The language between the application and the root helper: bodies of frames, JSON both ways. How they
// travel, who may ask and what is done about them is not told here.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "base/error.h"
#include "base/json.h"
#include "core/records/app_info.h"
#include "core/records/helper_records.h"

namespace corvane {

// Both sides carry it in every body; the helper answers another version with `HelperErrorCode::version`.
inline constexpr int kHelperProtocolVersion = 1;

// Limits inside a request: the public catalogue has 1,245 labels, the longest has 36 characters.
inline constexpr std::size_t kHelperLabelsLimit = 5000;
inline constexpr std::size_t kHelperLabelLengthLimit = 100;
inline constexpr std::size_t kHelperIdLengthLimit = 64;

// Codes of the domain "CRVHelper" (XPCError::domain). 1 is XPCError::discoveryFailed. Stable: both sides and
// docs/helper-protocol.md know them.
enum class HelperErrorCode {
  discoveryFailed = 1,
  malformed = 2,  // no JSON, no object, a field missing or of another kind, a torn frame
  version = 3,    // another protocol version
  unknownOperation = 4,
  tooLarge = 5,      // a frame, a list or a name over its limit
  notPermitted = 6,  // neither root nor the console user
  busy = 7,          // as many runs or discoveries wait as may
  replaced = 8,      // a newer staging request took this one's place
  stopping = 9,      // the helper is going down
  tooManyPeers = 10,
  idle = 11,          // no whole request came in time
  unknownLabel = 12,  // a label that the catalogue does not have
  notReady = 13,      // Installomator is not there, or cannot be run
  storage = 14        // the helper could not write what it must write
};

[[nodiscard]] Error helperError(HelperErrorCode code, std::string text);
[[nodiscard]] bool isHelperError(const Error& error, HelperErrorCode code);

// What may be asked.
namespace ask {
struct Status {
  friend bool operator==(const Status&, const Status&) = default;
};
struct DiscoverInstalled {
  friend bool operator==(const DiscoverInstalled&, const DiscoverInstalled&) = default;
};
struct DiscoverWithUpdates {
  friend bool operator==(const DiscoverWithUpdates&, const DiscoverWithUpdates&) = default;
};
struct DiscoverForLabels {
  Labels labels;
  bool includeLatestVersions = false;
  friend bool operator==(const DiscoverForLabels&, const DiscoverForLabels&) = default;
};
// With no `labels` the helper only stages `alsoStageLabels`.
struct StartPatching {
  Labels labels;
  Labels alsoStageLabels;
  friend bool operator==(const StartPatching&, const StartPatching&) = default;
};
struct PatchingProgress {
  friend bool operator==(const PatchingProgress&, const PatchingProgress&) = default;
};
}  // namespace ask

using HelperQuestion = std::variant<ask::Status, ask::DiscoverInstalled, ask::DiscoverWithUpdates,
                                    ask::DiscoverForLabels, ask::StartPatching, ask::PatchingProgress>;

struct HelperRequest {
  std::string id;  // chosen by the asker, told back in the answer
  HelperQuestion question;
  friend bool operator==(const HelperRequest&, const HelperRequest&) = default;
};

// The operation's name on the wire: "status", "discoverInstalled", "discoverWithUpdates",
// "discoverForLabels", "startPatching", "patchingProgress".
[[nodiscard]] std::string_view operationName(const HelperQuestion& question);

// {"version":1,"id":"...","op":"...", ...arguments}.
[[nodiscard]] std::string composeRequest(const HelperRequest& request);

// A refused request: the error to answer with, and the id as far as it could be read.
struct RefusedRequest {
  std::string id;
  Error error;
};

// Every field that the operation knows must be there and of its kind; one that it does not know is refused
// (`malformed`), never ignored. Labels hold only letters, digits, "_" and "-".
[[nodiscard]] std::expected<HelperRequest, RefusedRequest> parseRequest(std::string_view body);

// {"version":1,"id":"...","result":...} and {"version":1,"id":"...","error":{"domain","code","text"}}.
[[nodiscard]] std::string composeAnswer(std::string_view id, JsonValue result);
[[nodiscard]] std::string composeRefusal(std::string_view id, const Error& error);

// The result, or the error that the helper answered, or `malformed` for what is not an answer to `id`.
// Refusals that came before the helper could read an id are taken as the answer to any.
[[nodiscard]] Result<JsonValue> parseAnswer(std::string_view body, std::string_view id);

// Results. Dates are seconds since 2001. Lists of applications have the form of app_info.h.
[[nodiscard]] JsonValue toJson(const StatusInfo& status);
[[nodiscard]] Result<StatusInfo> statusInfoFromJson(const JsonValue& value);
[[nodiscard]] JsonValue toJson(const PatchRunAnswer& answer);
[[nodiscard]] Result<PatchRunAnswer> patchRunAnswerFromJson(const JsonValue& value);
[[nodiscard]] JsonValue toJson(const PatchProgressInfo& progress);
[[nodiscard]] Result<PatchProgressInfo> patchProgressFromJson(const JsonValue& value);

}  // namespace corvane
