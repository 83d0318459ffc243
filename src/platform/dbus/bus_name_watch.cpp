#include "platform/dbus/bus_name_watch.h"

#include <utility>

#include "platform/dbus/bus_call.h"

namespace corvane {

namespace {

constexpr Duration kLimit = 5s;

std::optional<std::string> somebody(const std::string& owner) {
  return owner.empty() ? std::nullopt : std::optional(owner);
}

}  // namespace

BusNameWatch::BusNameWatch(BusLink& link, std::string name, std::function<void()> changed)
    : link_(link), name_(std::move(name)), changed_(std::move(changed)) {
  signal_ = link_.subscribe(
      "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
      "member='NameOwnerChanged',arg0='" +
          name_ + "'",
      [this](sdbus::Message& message) {
        std::string which;
        std::string before;
        std::string after;
        message >> which >> before >> after;
        now(somebody(after));
      });
  connection_ = link_.watch([this](bool connected) {
    if (connected) return look();
    now(std::nullopt);
  });
}

void BusNameWatch::look() {
  ask<std::string>(link_, toBus("GetNameOwner"), kLimit, lifeline_.guard([this](const auto& answer) {
    now(answer ? somebody(std::get<0>(answer->values)) : std::nullopt);
  }),
                   name_);
}

void BusNameWatch::now(std::optional<std::string> owner) {
  if (std::exchange(known_, true) && owner == owner_) return;
  owner_ = std::move(owner);
  changed_();
}

}  // namespace corvane
