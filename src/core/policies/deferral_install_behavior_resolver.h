// What an update will do to an application, open or closed, as the prompt tells it beforehand.
#pragma once

#include <string_view>

#include "core/records/app_info.h"
#include "core/records/deferral_records.h"

namespace corvane {

// What a static reading of a label's file tells of how it treats a running application.
struct LabelInstallFacts {
  bool ownUpdateToolExists = false;  // the label names a literal updateTool, and that file is on disk
  bool blocksNothing = false;        // its literal blockingProcesses begins with NONE
  friend bool operator==(const LabelInstallFacts&, const LabelInstallFacts&) = default;
};

// Who can read labels. An unknown label has no facts set.
class LabelInstallFactsSource {
 public:
  virtual ~LabelInstallFactsSource() = default;
  [[nodiscard]] virtual LabelInstallFacts installFacts(const Label& label) const = 0;
};

struct DeferralInstallBehaviorResolver {
  struct Setting {
    bool isOpen = false;
    std::string_view installomatorOptions;
    bool backgroundPatchClosedAppsEnabled = false;
  };

  // Closed: in the background when that is enabled, else with the other updates. Open: the label's own update
  // tool, unless INSTALL=force, IGNORE_APP_STORE_APPS=yes or an updateTool in the options switch it off; a
  // label that blocks nothing updates without quitting; otherwise BLOCKING_PROCESS_ACTION decides, where an
  // absent one is tell_user and an unknown one leaves the application alone while it is open.
  [[nodiscard]] static DeferralInstallBehavior behavior(const Setting& setting, const LabelInstallFacts& facts);
};

}  // namespace corvane
