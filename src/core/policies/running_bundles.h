// What runs on the machine at one moment, and whether an application is certainly closed.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "core/preferences/configuration.h"
#include "core/records/app_info.h"
#include "platform/running_applications.h"

namespace corvane {

// The bundles and identifiers of all processes of the machine, whoever's they are.
struct RunningBundles {
  std::set<std::string, std::less<>> paths;
  std::set<std::string, std::less<>> identifiers;  // in lower case

  // Absent when the processes cannot be listed. Main thread, as the port.
  [[nodiscard]] static std::optional<RunningBundles> of(const RunningApplications& applications);

  // One of its processes runs from its bundle, or somebody runs one with its identifier.
  [[nodiscard]] bool holds(const AppInfo& app) const { return runsFrom(app) || runsAs(app); }

  // Why the application cannot be certified closed, for a log line; absent when it can. A required one that is not
  // installed has nothing to close.
  struct Objection {
    std::string text;
    bool nothingOnFile = false;  // neither a path nor an identifier to look for
  };
  [[nodiscard]] std::optional<Objection> objection(const AppInfo& app) const;

 private:
  [[nodiscard]] bool runsFrom(const AppInfo& app) const;
  [[nodiscard]] bool runsAs(const AppInfo& app) const;
};

// Whether the lists of the background pass let the label. The block list wins; an empty allow list allows all.
[[nodiscard]] bool backgroundListsAllow(const Label& label, const CorvaneConfiguration& config);

}  // namespace corvane
