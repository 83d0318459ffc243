#include "platform/posix/bundle_path.h"

namespace corvane {

namespace {

constexpr std::string_view kSuffix = ".app";

bool isBundleName(std::string_view component) {
  if (component.size() <= kSuffix.size()) return false;
  const auto end = component.substr(component.size() - kSuffix.size());
  for (std::size_t i = 0; i < end.size(); ++i) {
    const char c = end[i] >= 'A' && end[i] <= 'Z' ? static_cast<char>(end[i] - 'A' + 'a') : end[i];
    if (c != kSuffix[i]) return false;
  }
  return true;
}

}  // namespace

std::optional<std::string> outermostBundle(std::string_view path) {
  std::size_t begin = 0;
  for (auto slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/', begin)) {
    if (isBundleName(path.substr(begin, slash - begin)) && slash + 1 < path.size())
      return std::string(path.substr(0, slash));
    begin = slash + 1;
  }
  return std::nullopt;
}

}  // namespace corvane
