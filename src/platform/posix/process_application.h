// The process as an application on a desktop that keeps no such record itself.
#pragma once

#include <functional>
#include <utility>

#include "platform/application.h"

namespace corvane {

// Holds what it is told. A program that shows no window starts as an accessory and is not in front.
class ProcessApplication final : public Application {
 public:
  using BadgeSink = std::function<void(const std::optional<std::string>&)>;

  // `badge`, when given, shows the label wherever the desktop has a place for it; it is called only for a
  // label that differs from the last one.
  explicit ProcessApplication(BadgeSink badge = nullptr) : badge_(std::move(badge)) {}

  // From now on, and at once for a label that is set.
  void setBadgeSink(BadgeSink badge);
  void setActivationPolicy(ActivationPolicy policy) { policy_ = policy; }
  void setActive(bool active) { active_ = active; }

  [[nodiscard]] ActivationPolicy activationPolicy() const override { return policy_; }
  [[nodiscard]] bool isActive() const override { return active_; }
  void setBadge(const std::optional<std::string>& label) override;

 private:
  BadgeSink badge_;
  ActivationPolicy policy_ = ActivationPolicy::accessory;
  bool active_ = false;
  std::optional<std::string> label_;
};

}  // namespace corvane
