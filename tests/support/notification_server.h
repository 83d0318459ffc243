// A notification service on a test's bus.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "support/private_bus.h"

namespace corvane::testing {

// Answers on a thread of its own; what it was asked is read from the test's.
class NotificationServer {
 public:
  struct Shown {
    std::uint32_t number = 0;
    std::uint32_t replaces = 0;
    std::string application;
    std::string icon;
    std::string summary;
    std::string body;
    std::vector<std::string> actions;
    std::map<std::string, sdbus::Variant> hints;
    std::int32_t timeout = 0;

    [[nodiscard]] std::string hint(const std::string& name) const {
      const auto found = hints.find(name);
      return found == hints.end() ? "" : found->second.get<std::string>();
    }
    [[nodiscard]] bool isQuiet() const {
      return hints.contains("suppress-sound") && hints.at("suppress-sound").get<bool>();
    }
  };

  static constexpr const char* kName = "org.freedesktop.Notifications";

  explicit NotificationServer(const PrivateBus& bus,
                              std::vector<std::string> capabilities = {"body", "actions", "body-markup", "sound"},
                              std::uint32_t firstNumber = 1)
      : service_(bus, kName), object_(service_.at("/org/freedesktop/Notifications")), last_(firstNumber - 1) {
    object_.registerMethod("GetCapabilities").onInterface(kName).implementedAs([capabilities] { return capabilities; });
    object_.registerMethod("Notify").onInterface(kName).implementedAs(
        [this](const std::string& application, std::uint32_t replaces, const std::string& icon,
               const std::string& summary, const std::string& body, const std::vector<std::string>& actions,
               const std::map<std::string, sdbus::Variant>& hints, std::int32_t timeout) {
          std::unique_lock lock(mutex_);
          goesOn_.wait(lock, [this] { return !holdsBack_; });
          if (refuses) throw sdbus::Error("org.example.Error.Full", "no room on the screen");
          Shown shown{.replaces = replaces,
                      .application = application,
                      .icon = icon,
                      .summary = summary,
                      .body = body,
                      .actions = actions,
                      .hints = hints,
                      .timeout = timeout};
          shown.number = replaces != 0 && !numbersAnew ? replaces : ++last_;
          std::erase_if(shown_, [&](const auto& one) { return one.number == shown.number; });
          shown_.push_back(shown);
          return shown.number;
        });
    object_.registerMethod("CloseNotification").onInterface(kName).implementedAs([this](std::uint32_t number) {
      if (take(number)) signalClosed(number, 3);
    });
    object_.registerSignal("ActionInvoked").onInterface(kName).withParameters<std::uint32_t, std::string>();
    object_.registerSignal("NotificationClosed").onInterface(kName).withParameters<std::uint32_t, std::uint32_t>();
    service_.answer();
  }
  ~NotificationServer() { holdBack(false); }

  std::atomic<bool> refuses = false;
  std::atomic<bool> numbersAnew = false;  // heeds no replacement

  [[nodiscard]] std::vector<Shown> shown() const {
    const std::scoped_lock lock(mutex_);
    return shown_;
  }
  [[nodiscard]] std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const auto& one : shown()) titles.push_back(one.summary);
    return titles;
  }
  [[nodiscard]] std::uint32_t numberOf(const std::string& title) const {
    for (const auto& one : shown())
      if (one.summary == title) return one.number;
    return 0;
  }

  // The user's doing. What was chosen stays until somebody closes it.
  void choose(std::uint32_t number, const std::string& action) {
    auto signal = object_.createSignal(kName, "ActionInvoked");
    signal << number << action;
    object_.emitSignal(signal);
  }
  void dismiss(std::uint32_t number) {
    if (take(number)) signalClosed(number, 2);
  }

  void holdBack(bool holds) {
    {
      const std::scoped_lock lock(mutex_);
      holdsBack_ = holds;
    }
    goesOn_.notify_all();
  }

 private:
  bool take(std::uint32_t number) {
    const std::scoped_lock lock(mutex_);
    return std::erase_if(shown_, [&](const auto& one) { return one.number == number; }) > 0;
  }
  void signalClosed(std::uint32_t number, std::uint32_t reason) {
    auto signal = object_.createSignal(kName, "NotificationClosed");
    signal << number << reason;
    object_.emitSignal(signal);
  }

  mutable std::mutex mutex_;
  std::condition_variable goesOn_;
  bool holdsBack_ = false;
  std::vector<Shown> shown_;
  BusService service_;
  sdbus::IObject& object_;
  std::uint32_t last_;
};

}  // namespace corvane::testing
