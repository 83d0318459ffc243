#include "platform/uv/line_splitter.h"

#include <algorithm>
#include <utility>

namespace corvane {

std::vector<std::string> LineSplitter::take(std::string_view bytes) {
  std::vector<std::string> lines;
  while (!bytes.empty()) {
    const auto feed = bytes.find('\n');
    const auto length = std::min(feed, bytes.size());
    const auto piece = std::min(length, limit_ - line_.size());
    line_.append(bytes.substr(0, piece));
    bytes.remove_prefix(piece);
    if (piece < length) {
      lines.push_back(std::exchange(line_, {}));
    } else if (feed != std::string_view::npos) {
      bytes.remove_prefix(1);
      if (line_.ends_with('\r')) line_.pop_back();
      lines.push_back(std::exchange(line_, {}));
    }
  }
  return lines;
}

std::vector<std::string> LineSplitter::rest() {
  if (line_.empty()) return {};
  return {std::exchange(line_, {})};
}

}  // namespace corvane
