// Failures as values. Nothing here logs, throws or localises.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <utility>

namespace corvane {

// Why an operation failed. `domain` names the owner of the code ("CRVHelper"), `code` is stable within
// the domain and safe to compare, `text` is a sentence that a person can act on.
struct Error {
  std::string domain;
  int code = 0;
  std::string text;

  // The same failure with what was being done in front of its text: "<doing>: <text>".
  [[nodiscard]] Error within(std::string_view doing) const {
    return {.domain = domain, .code = code, .text = std::string(doing) + ": " + text};
  }

  friend bool operator==(const Error&, const Error&) = default;
};

template <class T>
using Result = std::expected<T, Error>;

using Status = Result<void>;

// Shorthand for the failing side: `return failure("CRVFiles", errno, "...")`.
[[nodiscard]] inline std::unexpected<Error> failure(std::string domain, int code, std::string text) {
  return std::unexpected(Error{.domain = std::move(domain), .code = code, .text = std::move(text)});
}

}  // namespace corvane
