// Whose account this program runs as, and where people's folders lie.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// Main thread; answered at once.
class Accounts {
 public:
  virtual ~Accounts() = default;
  [[nodiscard]] virtual std::string userName() const = 0;  // short name of the running user
  [[nodiscard]] virtual bool isRoot() const = 0;           // the running user
  // Absent for a user whom the machine does not know.
  [[nodiscard]] virtual std::optional<std::filesystem::path> homeOf(std::string_view user) const = 0;
  // The running user's; absent where there is no such folder.
  [[nodiscard]] virtual std::optional<std::filesystem::path> desktop() const = 0;
};

}  // namespace corvane
