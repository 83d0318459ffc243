// What is installed, and on request in which latest versions: the scan off the main thread, the version check by
// children, put together. Installs nothing and keeps no inventory.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "base/lifeline.h"
#include "base/work_queue.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "core/preferences/configuration.h"
#include "core/records/app_info.h"
#include "helper/catalog_keeper.h"
#include "helper/trouble_log.h"
#include "helper/version_checker.h"
#include "platform/clock.h"

namespace corvane {

// The settings and places of the moment: who sits at the machine may change between two requests.
struct HelperSetting {
  CorvaneConfiguration config;
  bool optionsAreManaged = false;  // the options string comes from the managed domain
  CorvaneConstants constants;
  Apps savedApps;  // the inventory that the application keeps
};

// A version found this short a time ago is good enough to install towards; a check always asks anew.
inline constexpr Duration kVersionMemory = 15min;

// The apps with what was found out about their latest versions; apps without an answer stay as they are.
[[nodiscard]] Apps withLatestVersions(Apps apps, const VersionAnswers& answers);

// Main thread.
class AppDiscoverer {
 public:
  struct Services {
    WorkQueue& work;
    MainQueue& main;
    const Clock& clock;
    LogSink& log;
    VersionChecker& versions;
    std::function<HelperSetting()> setting;
  };
  explicit AppDiscoverer(Services services);

  enum class Latest { no, remembered, fresh };
  struct Order {
    std::optional<std::set<Label>> labels;  // absent: all that the settings include
    Latest latest = Latest::no;
  };

  // Labels that the catalogue does not have are left out, with a log line. A damaged fragment or application is told to
  // the log when it is met first, and again only after it was well. Runs `done` once, in a later turn;
  // fails with XPCError::discovery when the folders of labels or applications cannot be read.
  void discover(Order order, Completion<Result<Apps>> done);

 private:
  struct Scan;
  // What scans share, off the main thread too; each part guards itself.
  struct Memory {
    Memory(const Clock& clock, LogSink& sink) : catalogs(clock, sink), troubles(sink), log(sink) {}
    CatalogKeeper catalogs;
    TroubleLog troubles;
    LogSink& log;
  };
  static Scan scan(const HelperSetting& setting, const Order& order, Memory& memory);
  void checkVersions(Scan scan, Latest latest, Completion<Result<Apps>> done);
  [[nodiscard]] VersionAnswers takeRemembered(std::vector<VersionQuestion>& questions) const;
  void remember(const VersionAnswers& answers);

  struct Remembered {
    std::string version;
    SteadyTime at;
  };
  Services s_;
  std::shared_ptr<Memory> memory_;
  std::map<Label, Remembered> remembered_;
  Lifeline lifeline_;
};

}  // namespace corvane
