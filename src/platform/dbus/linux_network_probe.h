// Whether the network leads anywhere: the network manager's word, the kernel's, and a page that tells.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/lifeline.h"
#include "base/main_queue.h"
#include "platform/dbus/bus_name_watch.h"
#include "platform/http_client.h"
#include "platform/network_probe.h"

namespace corvane {

// The link is the network manager's word where one runs, else an interface with an address. The manager's word
// "portal" is believed. Else the configured page tells: 204, or 200 without a body, comes from no portal; a page from
// another host, one with a body, or the status that was made for it (511) does; an error of the server's and no answer
// say nothing. Without such a page the manager's word "full" is no portal. Answers within kLimit; starts no service.
class LinuxNetworkProbe final : public NetworkProbe {
 public:
  static constexpr Duration kLimit = 10s;

  struct Surroundings {
    BusLink& system;
    MainQueue& main;
    HttpClient& http;
    std::function<std::optional<std::string>()>
        probeURL;                   // asked at each probe; absent or empty: there is no such page
    std::function<bool()> hasLink;  // by the kernel's word
    Duration pageLimit = 5s;
  };

  explicit LinuxNetworkProbe(Surroundings surroundings);
  ~LinuxNetworkProbe() override;
  LinuxNetworkProbe(const LinuxNetworkProbe&) = delete;
  LinuxNetworkProbe& operator=(const LinuxNetworkProbe&) = delete;

  void probe(Completion<NetworkState> done) override;

 private:
  struct Probe {
    Completion<NetworkState> done;
    Lease alarm;
    bool waitsForManager = true;
    std::optional<NetworkState> known;  // so far
  };

  void managerKnown();
  void askManager(std::uint64_t number);
  void linkKnown(std::uint64_t number, NetworkState state, bool isFull);
  void finish(std::uint64_t number, NetworkState state);

  Surroundings around_;
  std::uint64_t last_ = 0;
  std::map<std::uint64_t, Probe> probes_;
  BusNameWatch manager_;
  Lifeline lifeline_;
};

}  // namespace corvane
