// What the two settings about starting and restarting ask of the login agent. Writes no file, starts nothing.
#pragma once

#include <string_view>
#include <variant>

namespace corvane {

struct LoginItemAgentPolicy {
  // What the settings ask.
  struct Desired {
    bool openAtLogin = false;
    bool keepAlive = false;
    friend bool operator==(const Desired&, const Desired&) = default;
  };

  // What is to be done about it.
  struct Install {
    bool runAtLoad = false;
    bool keepAliveAlways = false;  // false: started again only after a crash
    friend bool operator==(const Install&, const Install&) = default;
  };
  struct Remove {
    friend bool operator==(const Remove&, const Remove&) = default;
  };
  struct DeferToSystemAgent {  // the organisation's own agent rules
    friend bool operator==(const DeferToSystemAgent&, const DeferToSystemAgent&) = default;
  };
  using Reconciliation = std::variant<Install, Remove, DeferToSystemAgent>;

  // Keeping alive implies opening at login.
  [[nodiscard]] static constexpr Reconciliation reconciliation(bool systemAgentInstalled, const Desired& desired) {
    if (systemAgentInstalled) return DeferToSystemAgent{};
    if (!desired.openAtLogin && !desired.keepAlive) return Remove{};
    return Install{.runAtLoad = true, .keepAliveAlways = desired.keepAlive};
  }
};

}  // namespace corvane
