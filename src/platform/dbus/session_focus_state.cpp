#include "platform/dbus/session_focus_state.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string_view>
#include <utility>

#include "platform/dbus/bus_connection.h"
#include "platform/linux/process_table.h"

namespace corvane {

namespace {

constexpr const char* kSystemBus = "unix:path=/run/dbus/system_bus_socket";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kNotifications = "org.freedesktop.Notifications";
constexpr const char* kNotificationsPath = "/org/freedesktop/Notifications";
constexpr const char* kLogin = "org.freedesktop.login1";
constexpr const char* kSession = "org.gnome.SessionManager";
constexpr const char* kSessionInhibitor = "org.gnome.SessionManager.Inhibitor";
constexpr std::uint32_t kHoldsOffIdleness = 8;  // of the session manager's flags

// Where a desktop keeps its switch: all are read by a method that takes two texts and gives a variant.
struct Switch {
  const char* server;  // as the notification service names itself; null for any
  const char* service;
  const char* path;
  const char* interface;
  const char* method;
  const char* first;
  const char* second;
  bool whenDisturbing;  // the value that means that nothing holds notifications back
};

constexpr Switch kInhibited{.server = nullptr,
                            .service = kNotifications,
                            .path = kNotificationsPath,
                            .interface = kProperties,
                            .method = "Get",
                            .first = kNotifications,
                            .second = "Inhibited",
                            .whenDisturbing = false};

// A setting counts only while the service that obeys it is the one that runs: others leave theirs behind.
constexpr std::array<Switch, 3> kSwitches{{
    {.server = "gnome-shell",
     .service = "org.freedesktop.portal.Desktop",
     .path = "/org/freedesktop/portal/desktop",
     .interface = "org.freedesktop.portal.Settings",
     .method = "Read",
     .first = "org.gnome.desktop.notifications",
     .second = "show-banners",
     .whenDisturbing = true},
    {.server = "Xfce Notify Daemon",
     .service = "org.xfce.Xfconf",
     .path = "/org/xfce/Xfconf",
     .interface = "org.xfce.Xfconf",
     .method = "GetProperty",
     .first = "xfce4-notifyd",
     .second = "/do-not-disturb",
     .whenDisturbing = false},
    {.server = "dunst",
     .service = kNotifications,
     .path = kNotificationsPath,
     .interface = kProperties,
     .method = "Get",
     .first = "org.dunstproject.cmd0",
     .second = "paused",
     .whenDisturbing = false},
}};

// The portal wraps its variant into another.
Heard<bool> truth(const sdbus::Variant& value) {
  if (value.containsValueOfType<bool>()) return value.get<bool>();
  if (value.containsValueOfType<sdbus::Variant>()) {
    const auto inner = value.get<sdbus::Variant>();
    if (inner.containsValueOfType<bool>()) return inner.get<bool>();
  }
  return std::unexpected(Silence::unreadable);
}

bool isAmong(std::string_view word, std::string_view wordsWithColons) {
  while (!wordsWithColons.empty()) {
    const auto end = std::min(wordsWithColons.find(':'), wordsWithColons.size());
    if (wordsWithColons.substr(0, end) == word) return true;
    wordsWithColons.remove_prefix(std::min(end + 1, wordsWithColons.size()));
  }
  return false;
}

std::string lastComponent(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// `given` when the process is gone, or its number went to somebody else.
std::string processName(pid_t pid, uid_t user, const std::string& given) {
  const auto process = readProcess("/proc/" + std::to_string(pid), pid);
  if (!process || process->uid != user) return given;
  return lastComponent(process->executable);
}

std::optional<std::string> environmentValue(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) return std::nullopt;
  return value;
}

}  // namespace

class SessionFocusState::Desktop {
 public:
  Desktop(BusAddresses addresses, BusPatience patience)
      : session_(std::move(addresses.session)), system_(std::move(addresses.system)), patience_(patience) {}

  [[nodiscard]] Heard<bool> doNotDisturb() {
    const BusDeadline deadline(patience_);
    const auto own = isOn(kInhibited, deadline);
    if (own || own.error() == Silence::unreadable) return own;
    const auto owner = session_.ownerOf(kNotifications, deadline);
    if (!owner) return std::unexpected(owner.error());
    const auto server = session_.ask<std::string>(
        {.owner = *owner, .path = kNotificationsPath, .interface = kNotifications}, "GetServerInformation", deadline);
    if (!server) return std::unexpected(server.error());
    for (const auto& setting : kSwitches)
      if (*server == setting.server) return isOn(setting, deadline);
    return std::unexpected(Silence::nobody);
  }

  [[nodiscard]] Heard<std::vector<std::string>> displaySleepHolders() {
    const BusDeadline deadline(patience_);
    std::set<std::string> names;
    for (const auto gather : {&Desktop::loginHolders, &Desktop::sessionHolders}) {
      const auto gathered = (this->*gather)(names, deadline);
      if (!gathered && gathered.error() == Silence::unreadable) return std::unexpected(gathered.error());
    }
    return std::vector<std::string>(names.begin(), names.end());
  }

 private:
  [[nodiscard]] Heard<bool> isOn(const Switch& setting, const BusDeadline& deadline) {
    const auto owner = session_.ownerOf(setting.service, deadline);
    if (!owner) return std::unexpected(owner.error());
    const auto value =
        session_.ask<sdbus::Variant>({.owner = *owner, .path = setting.path, .interface = setting.interface},
                                     setting.method, deadline, setting.first, setting.second);
    if (!value) return std::unexpected(value.error());
    const auto read = truth(*value);
    if (!read) return read;
    return *read != setting.whenDisturbing;
  }

  [[nodiscard]] Heard<void> loginHolders(std::set<std::string>& names, const BusDeadline& deadline) {
    // What, who, why, mode, user and process.
    using Inhibitor = sdbus::Struct<std::string, std::string, std::string, std::string, std::uint32_t, std::uint32_t>;
    const auto owner = system_.ownerOf(kLogin, deadline);
    if (!owner) return std::unexpected(owner.error());
    const auto inhibitors = system_.ask<std::vector<Inhibitor>>(
        {.owner = *owner, .path = "/org/freedesktop/login1", .interface = "org.freedesktop.login1.Manager"},
        "ListInhibitors", deadline);
    if (!inhibitors) return std::unexpected(inhibitors.error());
    for (const auto& inhibitor : *inhibitors) {
      const auto user = inhibitor.get<4>();
      if (user == ::getuid() && inhibitor.get<3>() == "block" && isAmong("idle", inhibitor.get<0>()))
        names.insert(processName(static_cast<pid_t>(inhibitor.get<5>()), user, inhibitor.get<1>()));
    }
    return {};
  }

  [[nodiscard]] Heard<void> sessionHolders(std::set<std::string>& names, const BusDeadline& deadline) {
    const auto owner = session_.ownerOf(kSession, deadline);
    if (!owner) return std::unexpected(owner.error());
    const auto inhibitors = session_.ask<std::vector<sdbus::ObjectPath>>(
        {.owner = *owner, .path = "/org/gnome/SessionManager", .interface = kSession}, "GetInhibitors", deadline);
    if (!inhibitors) return std::unexpected(inhibitors.error());
    for (const auto& path : *inhibitors) {
      const auto name = sessionHolder({.owner = *owner, .path = path, .interface = kSessionInhibitor}, deadline);
      if (name)
        names.insert(*name);
      else if (name.error() == Silence::unreadable)
        return std::unexpected(name.error());
    }
    return {};
  }

  // Nobody for one that holds off something else, or that went while it was asked for.
  [[nodiscard]] Heard<std::string> sessionHolder(const BusObject& inhibitor, const BusDeadline& deadline) {
    const auto flags = session_.ask<std::uint32_t>(inhibitor, "GetFlags", deadline);
    if (!flags) return std::unexpected(flags.error());
    if ((*flags & kHoldsOffIdleness) == 0) return std::unexpected(Silence::nobody);
    auto application = session_.ask<std::string>(inhibitor, "GetAppId", deadline);
    if (application && application->empty()) return lastComponent(inhibitor.path);
    return application;
  }

  BusConnection session_;
  BusConnection system_;
  BusPatience patience_;
};

BusAddresses BusAddresses::ofEnvironment() {
  return {.session = environmentValue("DBUS_SESSION_BUS_ADDRESS"),
          .system = environmentValue("DBUS_SYSTEM_BUS_ADDRESS").value_or(kSystemBus)};
}

SessionFocusState::SessionFocusState(BusAddresses addresses, BusPatience patience)
    : desktop_(std::make_unique<Desktop>(std::move(addresses), patience)) {}

SessionFocusState::~SessionFocusState() = default;

std::optional<bool> SessionFocusState::doNotDisturb() const {
  const auto heard = desktop_->doNotDisturb();
  return heard ? std::optional(*heard) : std::nullopt;
}

std::optional<std::vector<std::string>> SessionFocusState::displaySleepHolders() const {
  auto heard = desktop_->displaySleepHolders();
  return heard ? std::optional(std::move(*heard)) : std::nullopt;
}

}  // namespace corvane
