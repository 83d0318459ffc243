#include "platform/dbus/upower_source.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "platform/dbus/bus_call.h"

namespace corvane {

namespace {

constexpr const char* kService = "org.freedesktop.UPower";
constexpr const char* kPath = "/org/freedesktop/UPower";
constexpr const char* kProperty = "OnBattery";
constexpr Duration kLimit = 5s;

std::optional<bool> truth(const sdbus::Variant& value) {
  return value.containsValueOfType<bool>() ? std::optional(value.get<bool>()) : std::nullopt;
}

}  // namespace

UPowerSource::UPowerSource(BusLink& system, const PowerSource& otherwise)
    : system_(system), otherwise_(otherwise), service_(system, kService, [this] { look(); }) {
  const auto rule = std::string("type='signal',sender='") + kService + "',path='" + kPath + "',interface='" +
                    kProperties + "',member='PropertiesChanged',arg0='" + kService + "'";
  changed_ = system_.subscribe(rule, [this](sdbus::Message& message) {
    std::string interface;
    std::map<std::string, sdbus::Variant> values;
    std::vector<std::string> invalid;
    message >> interface >> values >> invalid;
    if (const auto found = values.find(kProperty); found != values.end()) onBattery_ = truth(found->second);
    if (std::ranges::find(invalid, kProperty) != invalid.end()) look();
  });
}

bool UPowerSource::isOnACPower() const { return onBattery_ ? !*onBattery_ : otherwise_.isOnACPower(); }

void UPowerSource::look() {
  onBattery_.reset();
  if (!service_.owner()) return;
  const BusCall get{.object = {.owner = *service_.owner(), .path = kPath, .interface = kProperties}, .method = "Get"};
  ask<sdbus::Variant>(system_, get, kLimit, lifeline_.guard([this, owner = service_.owner()](const auto& answer) {
    if (owner == service_.owner() && answer) onBattery_ = truth(std::get<0>(answer->values));
  }),
                      std::string(kService), std::string(kProperty));
}

}  // namespace corvane
