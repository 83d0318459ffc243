#include "platform/posix/process_environment.h"

#include <unistd.h>

#include <string_view>

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace corvane {

std::vector<std::pair<std::string, std::string>> processEnvironment() {
  std::vector<std::pair<std::string, std::string>> variables;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    if (const auto equals = text.find('='); equals != std::string_view::npos)
      variables.emplace_back(text.substr(0, equals), text.substr(equals + 1));
  }
  return variables;
}

}  // namespace corvane
