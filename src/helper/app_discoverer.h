// What is installed, and on request in which latest versions: the scan off the main thread, the version check by
// children, put together. Installs nothing and keeps no inventory.
#pragma once

#include <algorithm>
#include <array>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

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
  std::shared_ptr<const Apps> savedApps = std::make_shared<const Apps>();  // the inventory that the application keeps
};

// A version found this short a time ago is good enough to install towards; a check always asks anew.
inline constexpr Duration kVersionMemory = 15min;

// A scan takes about a second, on a slow disk some more; what has found nothing by then (a dead network volume) is
// given up. The version check behind it has a limit of its own.
inline constexpr Duration kDiscoveryTimeLimit = 5min;

// The apps with what was found out about their latest versions; apps without an answer stay as they are.
[[nodiscard]] Apps withLatestVersions(Apps apps, const VersionAnswers& answers);

// Main thread. A run, the clients and the helper's own work have one scan at a time each: what clients ask for is
// scanned in their order, and the others' discoveries wait for none of it.
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
  ~AppDiscoverer();

  enum class Latest { no, remembered, fresh };
  enum class Asker { run, client, helper };
  struct Order {
    std::optional<LabelSet> labels;  // absent: all that the settings include
    Latest latest = Latest::no;
    Asker asker = Asker::run;
    friend bool operator==(const Order&, const Order&) = default;
  };

  // Labels that the catalogue does not have are left out, with one log line for all. A damaged fragment or application
  // is told to the log when it is met first, and again only after it was well. Equal orders that wait share one scan
  // and its answer; one that has begun is not joined, since what it finds may be older than the order. Runs `done`
  // once, in a later turn; fails with XPCError::discovery when the folders of labels or applications cannot be read, or
  // when the scan has not ended within kDiscoveryTimeLimit of the order. Such a scan goes on, since nothing can end it,
  // and holds its place until it does.
  void discover(Order order, Completion<Result<Apps>> done);

  // Whether a scan is under way off the main thread, be its asker answered or not.
  [[nodiscard]] bool scanning() const {
    return std::ranges::any_of(lanes_, [](const Lane& lane) { return lane.scanning != nullptr; });
  }

  // Answers all whose scan has not ended with `stopping`, in a later turn. What waits is not begun.
  void stop();

 private:
  struct Scan;
  // What scans share, off the main thread too; each part guards itself.
  struct Memory {
    Memory(const Clock& clock, LogSink& sink) : catalogs(clock, sink), troubles(sink), log(sink) {}
    CatalogKeeper catalogs;
    TroubleLog troubles;
    LogSink& log;
  };
  struct Discovery {
    Order order;
    std::vector<Completion<Result<Apps>>> asked;
    Lease limit;
  };
  struct Lane {
    std::deque<std::shared_ptr<Discovery>> waiting;
    std::shared_ptr<Discovery> scanning;
  };
  static Scan scan(const HelperSetting& setting, const Order& order, Memory& memory);
  void scanNext(Lane& lane);
  void giveUp(Lane& lane, const std::shared_ptr<Discovery>& discovery);
  void scanned(const std::shared_ptr<Discovery>& discovery, Scan scan);
  static void answer(Discovery& discovery, const Result<Apps>& apps);
  void failLater(Discovery& discovery, const Error& error);
  [[nodiscard]] VersionAnswers takeRemembered(std::vector<VersionQuestion>& questions) const;
  void remember(const VersionAnswers& answers);

  struct Remembered {
    std::string version;
    SteadyTime at;
  };
  Services s_;
  Logger log_;
  std::shared_ptr<Memory> memory_;
  std::map<Label, Remembered> remembered_;
  std::array<Lane, 3> lanes_;  // by asker
  Lifeline lifeline_;
};

}  // namespace corvane
