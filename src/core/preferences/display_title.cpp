#include "core/preferences/display_title.h"

namespace corvane {
namespace {

constexpr std::string_view kName = "Corvane";

// Letters, digits, and every byte of a character outside ASCII.
bool isWordByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool startsWord(std::string_view before) {
  if (before.empty()) return true;
  const char last = before.back();
  return !isWordByte(last) && last != '.' && last != '/' && last != '-';
}

// The typographic apostrophe and quotation marks begin with these bytes and end a word like their ASCII kin.
bool isPunctuation(std::string_view text) { return text.starts_with("\xE2\x80"); }

bool endsWord(std::string_view after) {
  if (after.empty() || isPunctuation(after)) return true;
  const char next = after.front();
  if (next == '.' || next == '-') return after.size() == 1 || !isWordByte(after[1]);
  return !isWordByte(next) && next != '/';
}

bool opensAfterPunctuation(std::string_view before) {
  return before.size() >= 3 && isPunctuation(before.substr(before.size() - 3));
}

}  // namespace

AppDisplayTitle::AppDisplayTitle(std::string_view title) : title_(title) {
  if (title.find_first_not_of(" \t\r\n") == std::string_view::npos) title_ = kName;
}

std::string AppDisplayTitle::userFacing(std::string_view text) const {
  std::string result;
  std::size_t from = 0;
  for (auto at = text.find(kName); at != std::string_view::npos; at = text.find(kName, from)) {
    const auto before = text.substr(0, at);
    const auto end = at + kName.size();
    const bool whole = (startsWord(before) || opensAfterPunctuation(before)) && endsWord(text.substr(end));
    result += text.substr(from, at - from);
    result += whole ? std::string_view(title_) : kName;
    from = end;
  }
  result += text.substr(from);
  return result;
}

}  // namespace corvane
