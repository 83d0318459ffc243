#include "platform/posix/bundle_path.h"

#include "base/ascii.h"

namespace corvane {

namespace {

constexpr std::string_view kSuffix = ".app";

bool isBundleName(std::string_view component) {
  return component.size() > kSuffix.size() &&
         equalIgnoringCase(component.substr(component.size() - kSuffix.size()), kSuffix);
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
