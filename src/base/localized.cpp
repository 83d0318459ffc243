#include "base/localized.h"

namespace corvane {
namespace {

std::function<std::string(std::string_view)>& catalogue() {
  static std::function<std::string(std::string_view)> lookup;
  return lookup;
}

}  // namespace

std::string localized(std::string_view literal) {
  if (const auto& lookup = catalogue()) {
    if (auto text = lookup(literal); !text.empty()) return text;
  }
  return std::string(literal);
}

void installTextCatalogue(std::function<std::string(std::string_view)> lookup) { catalogue() = std::move(lookup); }

}  // namespace corvane
