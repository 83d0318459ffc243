#include "platform/dbus/login_console_sessions.h"

#include <utility>

#include "platform/dbus/bus_call.h"

namespace corvane {

namespace {

constexpr const char* kService = "org.freedesktop.login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kManagerPath = "/org/freedesktop/login1";
constexpr const char* kSession = "org.freedesktop.login1.Session";
constexpr Duration kLimit = 5s;

using Properties = std::map<std::string, sdbus::Variant>;

template <class Value>
std::optional<Value> valueOf(const Properties& properties, const char* name) {
  const auto found = properties.find(name);
  if (found == properties.end() || !found->second.containsValueOfType<Value>()) return std::nullopt;
  return found->second.get<Value>();
}

std::optional<ConsoleSession> atTheScreen(const Properties& properties) {
  using Seat = sdbus::Struct<std::string, sdbus::ObjectPath>;
  const auto seat = valueOf<Seat>(properties, "Seat");
  const auto name = valueOf<std::string>(properties, "Name");
  if (!seat || seat->get<0>().empty() || !name || name->empty()) return std::nullopt;
  if (valueOf<std::string>(properties, "Class") != "user" || valueOf<bool>(properties, "Remote") != false)
    return std::nullopt;
  ConsoleSession session{.user = *name};
  const auto since = valueOf<std::uint64_t>(properties, "Timestamp").value_or(0);
  if (since > 0) session.loggedInAt = Date(Duration(static_cast<Duration::rep>(since)));
  return session;
}

}  // namespace

LoginConsoleSessions::LoginConsoleSessions(BusLink& system, const ConsoleSessions& otherwise)
    : system_(system), otherwise_(otherwise), manager_(system, kService, [this] { look(); }) {
  const auto rule = std::string("type='signal',sender='") + kService + "',path='" + kManagerPath + "',interface='" +
                    kManager + "',member='";
  began_ = system_.subscribe(rule + "SessionNew'", [this](sdbus::Message& message) {
    std::string identifier;
    sdbus::ObjectPath path;
    message >> identifier >> path;
    if (manager_.owner()) lookAt(identifier, path);
  });
  ended_ = system_.subscribe(rule + "SessionRemoved'", [this](sdbus::Message& message) {
    std::string identifier;
    message >> identifier;
    told(identifier, std::nullopt);
  });
}

std::optional<std::vector<ConsoleSession>> LoginConsoleSessions::sessions() const {
  if (failed_ || (manager_.isKnown() && !manager_.owner())) return otherwise_.sessions();
  if (!listed_ || !untold_.empty()) return std::nullopt;
  std::vector<ConsoleSession> sessions;
  for (const auto& [identifier, session] : told_) sessions.push_back(session);
  return sessions;
}

void LoginConsoleSessions::look() {
  ++looks_;
  listed_ = failed_ = false;
  told_.clear();
  untold_.clear();
  if (!manager_.owner()) return;
  using Listed = sdbus::Struct<std::string, std::uint32_t, std::string, std::string, sdbus::ObjectPath>;
  const BusCall list{.object = {.owner = *manager_.owner(), .path = kManagerPath, .interface = kManager},
                     .method = "ListSessions"};
  ask<std::vector<Listed>>(system_, list, kLimit, lifeline_.guard([this, look = looks_](const auto& answer) {
    if (look != looks_) return;
    listed_ = answer.has_value();
    failed_ = !listed_;
    if (failed_) return;
    for (const auto& session : std::get<0>(answer->values)) {
      if (told_.contains(session.template get<0>())) continue;  // it came while the list was on its way
      untold_.insert(session.template get<0>());
      lookAt(session.template get<0>(), session.template get<4>());
    }
  }));
}

void LoginConsoleSessions::lookAt(const std::string& identifier, const std::string& path) {
  const BusCall all{.object = {.owner = *manager_.owner(), .path = path, .interface = kProperties}, .method = "GetAll"};
  ask<Properties>(system_, all, kLimit, lifeline_.guard([this, look = looks_, identifier](const auto& answer) {
    // One that ended while it was asked for has no properties any more.
    if (look == looks_) told(identifier, answer ? atTheScreen(std::get<0>(answer->values)) : std::nullopt);
  }),
                  std::string(kSession));
}

void LoginConsoleSessions::told(const std::string& identifier, std::optional<ConsoleSession> session) {
  untold_.erase(identifier);
  if (session)
    told_.insert_or_assign(identifier, *std::move(session));
  else
    told_.erase(identifier);
}

}  // namespace corvane
