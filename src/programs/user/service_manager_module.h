// The door between a user's program and the module that speaks with the service manager. It is opened only on a machine
// whose helper could be installed, so that a command on another root does not carry the libraries of the bus.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "base/main_queue.h"
#include "base/work_queue.h"
#include "platform/dbus/systemd_helper_registration.h"
#include "platform/helper_registration.h"

struct uv_loop_s;

namespace corvane {

// What the module is handed; all of it outlives the registration.
struct ServiceManagerHost {
  uv_loop_s* loop;
  MainQueue& main;
  WorkQueue& work;
  std::function<void(std::string_view)> log;  // takes finished sentences
};

struct ServiceManagerModule {
  // What the manager on the system bus says of the helper's unit: askUnitFile.
  Heard<UnitFile> (*ask)();
  // The helper as the manager keeps it; `known` is what `ask` gave, if it gave something.
  std::unique_ptr<HelperRegistration> (*keep)(const ServiceManagerHost& host, std::optional<UnitFile> known);
};
// The module has one, of the C linkage's name.
inline constexpr const char* kServiceManagerSymbol = "corvane_service_manager";
inline constexpr const char* kServiceManagerModuleFile = "libcorvane_service_manager.so";

}  // namespace corvane
