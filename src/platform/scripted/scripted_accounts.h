// Accounts in open fields.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "platform/accounts.h"

namespace corvane {

class ScriptedAccounts final : public Accounts {
 public:
  std::string name = "ada";
  bool root = false;
  std::map<std::string, std::filesystem::path, std::less<>> homes;
  std::optional<std::filesystem::path> desktopFolder;

  [[nodiscard]] std::string userName() const override { return name; }
  [[nodiscard]] bool isRoot() const override { return root; }
  [[nodiscard]] std::optional<std::filesystem::path> homeOf(std::string_view user) const override {
    const auto found = homes.find(user);
    return found == homes.end() ? std::nullopt : std::optional(found->second);
  }
  [[nodiscard]] std::optional<std::filesystem::path> desktop() const override { return desktopFolder; }
};

}  // namespace corvane
