// Accounts by the machine's own records.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/accounts.h"

namespace corvane {

// The desktop folder is the one that <home>/.config/user-dirs.dirs names, else <home>/Desktop.
class SystemAccounts final : public Accounts {
 public:
  // The running user's name and home are told, since the environment may name another home than the account.
  SystemAccounts(std::string userName, std::filesystem::path home)
      : userName_(std::move(userName)), home_(std::move(home)) {}

  [[nodiscard]] std::string userName() const override { return userName_; }
  [[nodiscard]] bool isRoot() const override;
  [[nodiscard]] std::optional<std::filesystem::path> homeOf(std::string_view user) const override;
  [[nodiscard]] std::optional<std::filesystem::path> desktop() const override;

 private:
  std::string userName_;
  std::filesystem::path home_;
};

}  // namespace corvane
