// What the process is to the desktop: its badge, its policy, whether it is in front.
#pragma once

#include <optional>
#include <string>

namespace corvane {

enum class ActivationPolicy { regular, accessory, prohibited, unknown };

// Main thread.
class Application {
 public:
  virtual ~Application() = default;
  [[nodiscard]] virtual ActivationPolicy activationPolicy() const = 0;
  [[nodiscard]] virtual bool isActive() const = 0;
  // Writes the label to the dock tile and draws it again; absent takes it away.
  virtual void setBadge(const std::optional<std::string>& label) = 0;
};

}  // namespace corvane
