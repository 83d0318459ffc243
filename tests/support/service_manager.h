// A service manager on a test's bus, that keeps one unit. No service is started by it.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/private_bus.h"

namespace corvane::testing {

struct ManagedUnit {
  std::string file;  // empty: there is none
  std::string active = "inactive";
  std::int32_t exitStatus = 0;
};

// Answers on a thread of its own as the real one does: signals only to those who subscribed, orders become jobs, an
// order that polkit would ask a person about is refused. What it was asked is read from the test's thread.
class ServiceManager {
 public:
  static constexpr const char* kName = "org.freedesktop.systemd1";
  static constexpr const char* kUnit = "CorvaneRootHelper.service";
  static constexpr const char* kUnitPath = "/org/freedesktop/systemd1/unit/CorvaneRootHelper_2eservice";

  using Unit = ManagedUnit;

  ServiceManager(const PrivateBus& bus, Unit first)
      : unit_(std::move(first)), service_(bus, kName), manager_(service_.at(kPath)), object_(service_.at(kUnitPath)) {
    serveFiles();
    serveOrders();
    manager_.registerSignal("JobRemoved")
        .onInterface(kManager)
        .withParameters<std::uint32_t, sdbus::ObjectPath, std::string, std::string>();
    manager_.registerSignal("UnitFilesChanged").onInterface(kManager);
    manager_.registerSignal("Reloading").onInterface(kManager).withParameters<bool>();
    object_.registerProperty("ActiveState").onInterface(kUnitInterface).withGetter([this] { return unit().active; });
    object_.registerProperty("ExecMainStatus").onInterface(kServiceInterface).withGetter([this] {
      return unit().exitStatus;
    });
    service_.answer();
  }
  ~ServiceManager() { hang(false); }

  [[nodiscard]] Unit unit() const {
    return guarded([&] { return unit_; });
  }
  // How often it was asked to.
  [[nodiscard]] int count(const std::string& method) const {
    return guarded([&] { return static_cast<int>(std::ranges::count(asked_, method)); });
  }
  // How often the helper was started that did not run.
  [[nodiscard]] int begun() const {
    return guarded([&] { return begun_; });
  }
  // All orders, in their sequence.
  [[nodiscard]] std::vector<std::string> orders() const {
    auto orders = guarded([&] { return asked_; });
    std::erase_if(orders, [](const auto& one) { return one == "GetUnitFileState" || one == "Subscribe"; });
    return orders;
  }

  // An administrator's doing, or the helper's own.
  void becomes(Unit unit) {
    guarded([&] { unit_ = std::move(unit); });
    tellOfFiles();
    tellOfState();
  }
  // The order `method` is answered with this error from now on; with an empty name it is carried out again.
  void refuse(const std::string& method, const std::string& error) {
    guarded([&] { refused_[method] = error; });
  }
  void refuseAll(const std::string& error) {
    for (const auto* method : {"EnableUnitFiles", "DisableUnitFiles", "Reload", "StartUnit", "StopUnit"})
      refuse(method, error);
  }
  // Jobs end with this result; one that is not "done" leaves the unit as `otherwise`.
  void jobsEnd(const std::string& result, Unit otherwise = {}) {
    guarded([&] { std::tie(result_, otherwise_) = std::tuple(result, std::move(otherwise)); });
  }
  // Jobs wait until finishJobs().
  void holdJobs() {
    guarded([&] { holdsJobs_ = true; });
  }
  void finishJobs() {
    const auto jobs = guarded([&] {
      holdsJobs_ = false;
      return std::exchange(jobs_, {});
    });
    for (const auto& [job, active] : jobs) finish(job, active);
  }
  // In the midst of what it is asked next, or of `method` alone, until told to go on.
  void hang(bool hangs, const std::string& method = "") {
    guarded([&] { std::tie(hangs_, hangsIn_) = std::tie(hangs, method); });
    goesOn_.notify_all();
  }

 private:
  static constexpr const char* kPath = "/org/freedesktop/systemd1";
  static constexpr const char* kManager = "org.freedesktop.systemd1.Manager";
  static constexpr const char* kUnitInterface = "org.freedesktop.systemd1.Unit";
  static constexpr const char* kServiceInterface = "org.freedesktop.systemd1.Service";
  using Changes = std::vector<sdbus::Struct<std::string, std::string, std::string>>;

  void serveFiles() {
    manager_.registerMethod("Subscribe").onInterface(kManager).implementedAs([this] {
      take("Subscribe");
      guarded([&] { subscribed_ = true; });
    });
    manager_.registerMethod("GetUnitFileState").onInterface(kManager).implementedAs([this](const std::string& name) {
      take("GetUnitFileState");
      requireFile(name);
      return unit().file;
    });
    manager_.registerMethod("EnableUnitFiles")
        .onInterface(kManager)
        .implementedAs([this](const std::vector<std::string>& names, bool, bool) {
          take("EnableUnitFiles");
          requireFile(names.at(0));
          if (unit().file == "masked") throw sdbus::Error("org.freedesktop.systemd1.UnitMasked", "Unit is masked.");
          put("enabled");
          return std::tuple(true, Changes());
        });
    manager_.registerMethod("DisableUnitFiles")
        .onInterface(kManager)
        .implementedAs([this](const std::vector<std::string>& names, bool) {
          take("DisableUnitFiles");
          if (unit().file == "enabled" && names.at(0) == kUnit) put("disabled");
          return Changes();
        });
    manager_.registerMethod("Reload").onInterface(kManager).implementedAs([this] {
      signal("Reloading", true);
      take("Reload");
      signal("Reloading", false);
    });
  }
  void serveOrders() {
    const auto order = [this](const char* method, const char* active) {
      manager_.registerMethod(method).onInterface(kManager).implementedAs(
          [this, method, active](const std::string& name, const std::string&) {
            take(method);
            if (name != kUnit || unit().file.empty())
              throw sdbus::Error("org.freedesktop.systemd1.NoSuchUnit", "Unit " + name + " not loaded.");
            return job(active);
          });
    };
    order("StartUnit", "active");
    order("StopUnit", "inactive");
  }

  void take(const std::string& method) {
    std::unique_lock lock(mutex_);
    asked_.push_back(method);
    goesOn_.wait(lock, [&] { return !hangs_ || (!hangsIn_.empty() && hangsIn_ != method); });
    if (const auto& error = refused_[method]; !error.empty()) throw sdbus::Error(error, "refused");
  }
  void requireFile(const std::string& name) const {
    if (name != kUnit || unit().file.empty())
      throw sdbus::Error("org.freedesktop.DBus.Error.FileNotFound", "No such file or directory");
  }
  void put(const std::string& file) {
    guarded([&] { unit_.file = file; });
    tellOfFiles();
  }
  // Ended before its number is answered, unless jobs are held.
  sdbus::ObjectPath job(const std::string& active) {
    const auto path = "/org/freedesktop/systemd1/job/" + std::to_string(guarded([&] { return ++lastJob_; }));
    const bool held = guarded([&] {
      if (holdsJobs_) jobs_.emplace_back(path, active);
      return holdsJobs_;
    });
    if (!held) finish(path, active);
    return sdbus::ObjectPath(path);
  }
  void finish(const std::string& job, const std::string& active) {
    const auto result = guarded([&] {
      begun_ += result_ == "done" && active == "active" && unit_.active != "active" ? 1 : 0;
      if (result_ == "done")
        unit_.active = active;
      else
        unit_ = otherwise_;
      return result_;
    });
    tellOfState();
    signal("JobRemoved", std::uint32_t{1}, sdbus::ObjectPath(job), std::string(kUnit), result);
  }
  void tellOfFiles() { signal("UnitFilesChanged"); }
  void tellOfState() {
    if (isHeard()) object_.emitPropertiesChangedSignal(kUnitInterface, {"ActiveState"});
  }
  [[nodiscard]] bool isHeard() const {
    return guarded([&] { return subscribed_; });
  }
  // The service and the test are on threads of their own.
  template <class Deed>
  std::invoke_result_t<const Deed&> guarded(const Deed& deed) const {
    const std::scoped_lock lock(mutex_);
    return deed();
  }
  template <class... Values>
  void signal(const char* name, const Values&... values) {
    if (!isHeard()) return;
    auto message = manager_.createSignal(kManager, name);
    ((message << values), ...);
    manager_.emitSignal(message);
  }

  mutable std::mutex mutex_;
  std::condition_variable goesOn_;
  Unit unit_;
  bool subscribed_ = false;
  bool hangs_ = false;
  std::string hangsIn_;
  bool holdsJobs_ = false;
  std::string result_ = "done";
  Unit otherwise_;
  int lastJob_ = 0;
  int begun_ = 0;
  std::vector<std::pair<std::string, std::string>> jobs_;
  std::map<std::string, std::string> refused_;
  std::vector<std::string> asked_;
  BusService service_;
  sdbus::IObject& manager_;
  sdbus::IObject& object_;
};

}  // namespace corvane::testing
