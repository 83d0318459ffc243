#include "base/utf8.h"

#include <simdjson.h>

#include <algorithm>

namespace corvane {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::size_t lengthByFirstByte(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xE0) return 2;
  return first < 0xF0 ? 3 : 4;
}

}  // namespace

bool isUtf8(std::string_view text) { return simdjson::validate_utf8(text.data(), text.size()); }

std::string validUtf8(std::string_view text) {
  std::string valid;
  while (!text.empty()) {
    const auto length = std::min(lengthByFirstByte(static_cast<unsigned char>(text.front())), text.size());
    const bool whole = isUtf8(text.substr(0, length));
    valid += whole ? text.substr(0, length) : kReplacement;
    text.remove_prefix(whole ? length : 1);
  }
  return valid;
}

}  // namespace corvane
