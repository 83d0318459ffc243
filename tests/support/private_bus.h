// A bus of a test's own and the services on it.
#pragma once

#include <sdbus-c++/sdbus-c++.h>
#include <signal.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/started_program.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

// Keeps its address when it is ended and started again. Knows no services but those of its folder.
class PrivateBus {
 public:
  static constexpr const char* kDaemon = "/usr/bin/dbus-daemon";

  PrivateBus() { start(); }

  [[nodiscard]] bool works() const { return !printed_.empty(); }
  [[nodiscard]] std::string address() const { return "unix:path=" + (folder_.path() / "bus").string(); }
  // As the daemon writes it, with its identity of this start.
  [[nodiscard]] const std::string& printedAddress() const { return printed_; }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

  void start() {
    const auto services = (folder_.path() / "services").string();
    const auto configuration =
        folder_.write("bus.conf", "<busconfig><type>session</type><listen>" + address() +
                                      "</listen><auth>EXTERNAL</auth><servicedir>" + services + kAnythingGoes);
    printed_ = firstLineOf([&](int line) {
      daemon_.emplace(std::vector<std::string>{kDaemon, "--nofork", "--nopidfile", "--nosyslog",
                                               "--config-file=" + configuration.string(),
                                               "--print-address=" + std::to_string(line)},
                      std::vector<std::string>{"PATH=/usr/bin:/bin"}, line);
    });
  }
  void end() { daemon_->end(); }
  void hang() const { daemon_->signal(SIGSTOP); }
  void goOn() const { daemon_->signal(SIGCONT); }

  // A service that the bus would start for whoever calls it. The program owns no name.
  void makeStartable(const std::string& name, const std::string& command) const {
    folder_.write("services/" + name + ".service", "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
  }

 private:
  static constexpr const char* kAnythingGoes =
      "</servicedir><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
      "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";

  TemporaryFolder folder_;
  std::optional<StartedProgram> daemon_;
  std::string printed_;
};

// A service on a bus. Owns its name at once; answers, on a thread of its own, from answer() on.
class BusService {
 public:
  BusService(const PrivateBus& bus, const std::string& name)
      : connection_(sdbus::createSessionBusConnectionWithAddress(bus.address())) {
    connection_->requestName(name);
  }

  sdbus::IObject& at(const std::string& path) {
    return *objects_.emplace_back(sdbus::createObject(*connection_, path));
  }
  void answer() {
    for (auto& object : objects_) object->finishRegistration();
    connection_->enterEventLoopAsync();
  }

 private:
  std::unique_ptr<sdbus::IConnection> connection_;
  std::vector<std::unique_ptr<sdbus::IObject>> objects_;
};

}  // namespace corvane::testing
