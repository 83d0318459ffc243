// What surrounds a session, as a test sets it: focus, power, network, and who sits at the console.
#pragma once

#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/main_queue.h"
#include "platform/console_session.h"
#include "platform/focus_state.h"
#include "platform/network_probe.h"
#include "platform/power_source.h"

namespace corvane {

// Open fields: what the next question is answered.
class ScriptedFocusState final : public FocusState {
 public:
  std::optional<bool> disturbed = false;
  std::optional<std::vector<std::string>> holders = std::vector<std::string>();

  [[nodiscard]] std::optional<bool> doNotDisturb() const override { return disturbed; }
  [[nodiscard]] std::optional<std::vector<std::string>> displaySleepHolders() const override { return holders; }
};

class ScriptedPowerSource final : public PowerSource {
 public:
  bool onACPower = true;

  [[nodiscard]] bool isOnACPower() const override { return onACPower; }
};

class ScriptedConsoleSessions final : public ConsoleSessions {
 public:
  std::optional<std::vector<ConsoleSession>> known;

  [[nodiscard]] std::optional<std::vector<ConsoleSession>> sessions() const override { return known; }
};

class ScriptedNetworkProbe final : public NetworkProbe {
 public:
  explicit ScriptedNetworkProbe(MainQueue& main) : main_(main) {}
  ~ScriptedNetworkProbe() override {
    for (auto& waiting : waiting_) waiting.done.abandon();
  }

  NetworkState state{.hasLink = true, .captivePortal = false};
  Duration takes = Duration::zero();
  int probes = 0;

  // Answers with the state of the moment at which it was asked.
  void probe(Completion<NetworkState> done) override {
    ++probes;
    const auto place = waiting_.insert(waiting_.end(), Waiting{.done = std::move(done)});
    place->answer = main_.after(takes, [this, place, answer = state] {
      auto answered = std::move(*place);
      waiting_.erase(place);
      answered.done(answer);
    });
  }

 private:
  struct Waiting {
    Completion<NetworkState> done;
    Lease answer;
  };

  MainQueue& main_;
  std::list<Waiting> waiting_;
};

}  // namespace corvane
