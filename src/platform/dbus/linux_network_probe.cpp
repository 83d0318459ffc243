#include "platform/dbus/linux_network_probe.h"

#include <string_view>
#include <utility>

#include "base/ascii.h"
#include "platform/dbus/bus_call.h"

namespace corvane {

namespace {

constexpr const char* kService = "org.freedesktop.NetworkManager";
constexpr const char* kPath = "/org/freedesktop/NetworkManager";
constexpr Duration kManagerLimit = 3s;

// The manager's numbers.
constexpr std::uint32_t kStateUnknown = 0;
constexpr std::uint32_t kConnectedToSite = 60;  // at least a way out of this machine's own segment
constexpr std::uint32_t kPortal = 2;
constexpr std::uint32_t kFull = 4;

constexpr int kAuthenticationRequired = 511;  // what a portal says that does not pretend to be the page

using Properties = std::map<std::string, sdbus::Variant>;

std::uint32_t numberOf(const Properties& properties, const char* name) {
  const auto found = properties.find(name);
  if (found == properties.end() || !found->second.containsValueOfType<std::uint32_t>()) return 0;
  return found->second.get<std::uint32_t>();
}

// Without name, password and port.
std::string hostOf(std::string_view url) {
  const auto scheme = url.find("://");
  if (scheme != std::string_view::npos) url.remove_prefix(scheme + 3);
  url = url.substr(0, url.find_first_of("/?#"));
  if (const auto at = url.rfind('@'); at != std::string_view::npos) url.remove_prefix(at + 1);
  if (const auto colon = url.rfind(':');
      colon != std::string_view::npos && url.find(']', colon) == std::string_view::npos)
    url = url.substr(0, colon);
  return lowercased(std::string(url));
}

std::optional<bool> comesFromPortal(const std::string& url, const Result<HttpAnswer>& answer) {
  if (!answer) return std::nullopt;
  if (answer->redirectedTo && hostOf(*answer->redirectedTo) != hostOf(url)) return true;
  if (answer->status == kAuthenticationRequired) return true;
  if (answer->status >= 400) return std::nullopt;
  return !answer->body.empty() || (answer->status != 204 && answer->status != 200);
}

}  // namespace

LinuxNetworkProbe::LinuxNetworkProbe(Surroundings surroundings)
    : around_(std::move(surroundings)), manager_(around_.system, kService, [this] { managerKnown(); }) {}

LinuxNetworkProbe::~LinuxNetworkProbe() {
  for (auto& [number, probe] : probes_) probe.done.abandon();
}

void LinuxNetworkProbe::probe(Completion<NetworkState> done) {
  const auto number = ++last_;
  auto& probe = probes_[number];
  probe.done = std::move(done);
  probe.alarm = around_.main.after(kLimit, [this, number] {
    const auto known = probes_.at(number).known;
    finish(number, known ? *known : NetworkState{.hasLink = around_.hasLink()});
  });
  around_.main.post(lifeline_.guard([this] { managerKnown(); }));
}

void LinuxNetworkProbe::managerKnown() {
  if (!manager_.isKnown()) return;
  for (auto& [number, probe] : probes_)
    if (std::exchange(probe.waitsForManager, false))
      around_.main.post(lifeline_.guard([this, number = number] { askManager(number); }));
}

void LinuxNetworkProbe::askManager(std::uint64_t number) {
  if (!manager_.owner()) return linkKnown(number, {.hasLink = around_.hasLink()}, false);
  const BusCall all{.object = {.owner = *manager_.owner(), .path = kPath, .interface = kProperties},
                    .method = "GetAll"};
  ask<Properties>(around_.system, all, kManagerLimit, lifeline_.guard([this, number](const auto& answer) {
    const auto properties = answer ? std::get<0>(answer->values) : Properties();
    const auto state = numberOf(properties, "State");
    const auto connectivity = numberOf(properties, "Connectivity");
    NetworkState known{.hasLink = state == kStateUnknown ? around_.hasLink() : state >= kConnectedToSite};
    if (connectivity == kPortal) known = {.hasLink = true, .captivePortal = true};
    linkKnown(number, known, connectivity == kFull);
  }),
                  std::string(kService));
}

void LinuxNetworkProbe::linkKnown(std::uint64_t number, NetworkState state, bool isFull) {
  const auto found = probes_.find(number);
  if (found == probes_.end()) return;  // its time was up
  const auto url = around_.probeURL().value_or("");
  if (!state.hasLink || state.captivePortal) return finish(number, state);
  if (url.empty()) {
    if (isFull) state.captivePortal = false;
    return finish(number, state);
  }
  found->second.known = state;
  around_.http.send({.url = url, .timeLimit = around_.pageLimit},
                    lifeline_.guard([this, number, url, state](const Result<HttpAnswer>& answer) mutable {
                      state.captivePortal = comesFromPortal(url, answer);
                      finish(number, state);
                    }));
}

void LinuxNetworkProbe::finish(std::uint64_t number, NetworkState state) {
  auto probe = probes_.extract(number);
  if (!probe.empty()) probe.mapped().done(state);
}

}  // namespace corvane
