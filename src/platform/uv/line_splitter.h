// Cuts a stream of bytes into lines as it comes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// Lines come without their line feed and a carriage return before it. A line above the limit comes in pieces.
class LineSplitter {
 public:
  explicit LineSplitter(std::size_t limit) : limit_(limit) {}

  // The lines that `bytes` complete.
  [[nodiscard]] std::vector<std::string> take(std::string_view bytes);
  // The last line, when the stream ended without a line feed.
  [[nodiscard]] std::vector<std::string> rest();

 private:
  std::size_t limit_;
  std::string line_;
};

}  // namespace corvane
