// The login agent as the settings window speaks of it. Who writes and loads the agent is no business of the window.
#pragma once

namespace corvane {

struct LoginAgentChoice {
  bool openAtLogin = false;
  bool keepAlive = false;
  bool isOrganizations = false;  // an agent for all users starts the application; the two choices are off
  friend bool operator==(const LoginAgentChoice&, const LoginAgentChoice&) = default;
};

// Main thread.
class LoginAgentSettings {
 public:
  virtual ~LoginAgentSettings() = default;
  [[nodiscard]] virtual LoginAgentChoice choice() const = 0;
  // Stores both keys and has the agent follow; what a write does not reach in time happens when the process ends.
  virtual void choose(bool openAtLogin, bool keepAlive) = 0;
};

}  // namespace corvane
