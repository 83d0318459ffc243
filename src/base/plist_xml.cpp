#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <limits>

#include "base/ascii.h"
#include "base/plist_readers.h"

namespace corvane {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// Whole numbers as decimal or 0x; what only fits unsigned becomes a real number.
std::optional<PlistValue> integerFrom(std::string_view text) {
  text = trimmed(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  if (hex) text.remove_prefix(2);
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, hex ? 16 : 10);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (value > most + (negative ? 1U : 0U))
    return negative ? std::nullopt : std::optional<PlistValue>(static_cast<double>(value));
  return PlistValue(static_cast<std::int64_t>(negative ? 0 - value : value));
}

std::optional<PlistValue> realFrom(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return PlistValue(value);
}

std::optional<PlistValue> dataFrom(std::string_view text) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  std::uint32_t bits = 0;
  unsigned filled = 0;
  std::size_t characters = 0;
  bool padded = false;
  for (const char c : text) {
    if (kBlanks.find(c) != kBlanks.npos) continue;
    ++characters;
    if (c == '=') {
      padded = true;
      continue;
    }
    const auto digit = digits.find(c);
    if (digit == digits.npos || padded) return std::nullopt;
    bits = bits << 6U | static_cast<std::uint32_t>(digit);
    filled += 6;
    if (filled >= 8) {
      filled -= 8;
      bytes += static_cast<char>(bits >> filled & 0xFFU);
    }
  }
  if (characters % 4 != 0) return std::nullopt;
  return PlistValue(PlistData{std::move(bytes)});
}

std::optional<PlistValue> leafFrom(std::string_view element, std::string&& text) {
  if (element == "string") return PlistValue(std::move(text));
  if (element == "integer") return integerFrom(text);
  if (element == "real") return realFrom(text);
  if (element == "data") return dataFrom(text);
  if (element == "true" || element == "false")
    return trimmed(text).empty() ? std::optional<PlistValue>(element == "true") : std::nullopt;
  if (element == "date") {
    const auto date = parseIso8601(trimmed(text));
    return date ? std::optional<PlistValue>(*date) : std::nullopt;
  }
  return std::nullopt;
}

class XmlReader {
 public:
  explicit XmlReader(std::string_view text) : text_(text) {}

  Result<PlistValue> read() {
    auto root = document();
    if (!root) return plistFailure("The XML property list is damaged near byte " + std::to_string(at_) + ".");
    return std::move(*root);
  }

 private:
  using Maybe = std::optional<PlistValue>;

  struct Tag {
    std::string_view name;
    bool closing = false;
    bool empty = false;
  };

  bool take(std::string_view expected) {
    if (!text_.substr(at_).starts_with(expected)) return false;
    at_ += expected.size();
    return true;
  }

  bool skipPast(std::string_view end) {
    const auto found = text_.find(end, at_);
    if (found == text_.npos) return false;
    at_ = found + end.size();
    return true;
  }

  // Blanks, comments and processing instructions. False when one of these does not end.
  bool skipBetween() {
    while (true) {
      at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
      if (take("<!--")) {
        if (!skipPast("-->")) return false;
      } else if (take("<?")) {
        if (!skipPast("?>")) return false;
      } else {
        return true;
      }
    }
  }

  // A document type with declarations inside could define entities; none of ours has any.
  bool skipDoctype() {
    if (!take("<!DOCTYPE")) return true;
    const auto end = text_.find_first_of("[>", at_);
    if (end == text_.npos || text_[end] == '[') return false;
    at_ = end + 1;
    return skipBetween();
  }

  std::optional<Tag> tag() {
    if (!skipBetween() || !take("<")) return std::nullopt;
    Tag tag{.closing = take("/")};
    const auto end = text_.find('>', at_);
    if (end == text_.npos) return std::nullopt;
    auto inside = text_.substr(at_, end - at_);
    at_ = end + 1;
    if (inside.ends_with('/')) {
      tag.empty = true;
      inside.remove_suffix(1);
    }
    tag.name = inside.substr(0, inside.find_first_of(kBlanks));
    if (tag.name.empty() || inside.find('<') != inside.npos || (tag.closing && tag.empty)) return std::nullopt;
    return tag;
  }

  Maybe document() {
    take("\xEF\xBB\xBF");
    if (!skipBetween() || !skipDoctype()) return std::nullopt;
    const auto open = tag();
    if (!open || open->name != "plist" || open->closing || open->empty) return std::nullopt;
    const auto first = tag();
    if (!first) return std::nullopt;
    auto root = element(*first, 0);
    if (!root) return std::nullopt;
    const auto close = tag();
    if (!close || !close->closing || close->name != "plist" || !skipBetween() || at_ != text_.size())
      return std::nullopt;
    return root;
  }

  Maybe element(const Tag& open, int depth) {
    if (open.closing || depth > kMostPlistDepth) return std::nullopt;
    if (open.name == "dict") return open.empty ? Maybe(PlistDict()) : dict(depth);
    if (open.name == "array") return open.empty ? Maybe(PlistArray()) : array(depth);
    auto content = open.empty ? std::optional<std::string>("") : leafText(open.name);
    if (!content) return std::nullopt;
    return leafFrom(open.name, std::move(*content));
  }

  Maybe array(int depth) {
    PlistArray items;
    while (true) {
      const auto next = tag();
      if (!next) return std::nullopt;
      if (next->closing) return next->name == "array" ? Maybe(std::move(items)) : std::nullopt;
      auto item = element(*next, depth + 1);
      if (!item) return std::nullopt;
      items.push_back(std::move(*item));
    }
  }

  Maybe dict(int depth) {
    PlistDict entries;
    while (true) {
      const auto next = tag();
      if (!next) return std::nullopt;
      if (next->closing) return next->name == "dict" ? Maybe(std::move(entries)) : std::nullopt;
      if (next->name != "key") return std::nullopt;
      auto key = next->empty ? std::optional<std::string>("") : leafText("key");
      const auto valueTag = key ? tag() : std::nullopt;
      auto value = valueTag ? element(*valueTag, depth + 1) : std::nullopt;
      if (!value) return std::nullopt;
      entries.insert_or_assign(std::move(*key), std::move(*value));
    }
  }

  // The text up to the closing tag of `name`, with entities resolved.
  std::optional<std::string> leafText(std::string_view name) {
    std::string out;
    while (true) {
      const auto next = text_.find_first_of("<&", at_);
      if (next == text_.npos) return std::nullopt;
      out += text_.substr(at_, next - at_);
      at_ = next;
      if (take("<![CDATA[")) {
        const auto from = at_;
        if (!skipPast("]]>")) return std::nullopt;
        out += text_.substr(from, at_ - 3 - from);
      } else if (take("<!--")) {
        if (!skipPast("-->")) return std::nullopt;
      } else if (take("&")) {
        if (!entity(out)) return std::nullopt;
      } else {
        const auto close = tag();
        if (!close || !close->closing || close->name != name) return std::nullopt;
        return out;
      }
    }
  }

  bool entity(std::string& out) {
    const auto end = text_.find(';', at_);
    if (end == text_.npos || end - at_ > 10) return false;
    auto name = text_.substr(at_, end - at_);
    at_ = end + 1;
    constexpr std::pair<std::string_view, char> known[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& [entityName, character] : known) {
      if (name != entityName) continue;
      out += character;
      return true;
    }
    if (!name.starts_with('#')) return false;
    name.remove_prefix(1);
    const bool hex = name.starts_with('x');
    if (hex) name.remove_prefix(1);
    std::uint32_t point = 0;
    const auto [last, error] = std::from_chars(name.data(), name.data() + name.size(), point, hex ? 16 : 10);
    if (name.empty() || error != std::errc() || last != name.data() + name.size() || point == 0) return false;
    appendUtf8(out, point);
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace

Result<PlistValue> readXmlPlist(std::string_view text) {
  if (text.find('\0') != text.npos || !simdjson::validate_utf8(text.data(), text.size()))
    return plistFailure("The property list is not in UTF-8.");
  return XmlReader(text).read();
}

}  // namespace corvane
