// The process as a desktop would see it, in open fields.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/application.h"

namespace corvane {

class ScriptedApplication final : public Application {
 public:
  ActivationPolicy policy = ActivationPolicy::regular;
  bool active = false;
  std::optional<std::string> badge;
  std::vector<std::optional<std::string>> badges;  // every label that was set, in order

  [[nodiscard]] ActivationPolicy activationPolicy() const override { return policy; }
  [[nodiscard]] bool isActive() const override { return active; }
  void setBadge(const std::optional<std::string>& label) override {
    badge = label;
    badges.push_back(label);
  }
};

}  // namespace corvane
