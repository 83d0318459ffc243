#include "core/discovery/info_plist_scanner.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <ranges>

namespace corvane {
namespace {

const WantedString* wantedFor(std::span<const WantedString> wanted, std::string_view key) {
  const auto found = std::ranges::find(wanted, key, &WantedString::key);
  return found == wanted.end() ? nullptr : &*found;
}

bool isAscii(std::string_view text) {
  return std::ranges::none_of(text, [](char letter) { return static_cast<unsigned char>(letter) >= 0x80; });
}

// False for a key that was seen before.
bool keep(const WantedString& wanted, std::string value) {
  if (wanted.value->has_value()) return false;
  *wanted.value = std::move(value);
  return true;
}

// The five named entities; nothing for any other.
std::optional<std::string> withoutEntities(std::string_view text) {
  struct Entity {
    std::string_view name;
    char letter;
  };
  constexpr auto kEntities =
      std::to_array<Entity>({{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}});
  std::string plain;
  while (!text.empty()) {
    const auto at = std::min(text.find('&'), text.size());
    plain.append(text.substr(0, at));
    text.remove_prefix(at);
    if (text.empty()) break;
    const auto* entity = std::ranges::find_if(kEntities, [&](const auto& each) { return text.starts_with(each.name); });
    if (entity == kEntities.end()) return std::nullopt;
    plain += entity->letter;
    text.remove_prefix(entity->name.size());
  }
  return plain;
}

// Walks an XML list tag by tag, checking that every tag closes where it should.
class XmlScan {
 public:
  XmlScan(std::string_view text, std::span<const WantedString> wanted) : rest_(text), wanted_(wanted) {}

  bool run() {
    if (!prolog()) return false;
    while (depth_ > 0)
      if (!element()) return false;
    skipBlanks();
    if (!take("</plist>")) return false;
    skipBlanks();
    return rest_.empty();
  }

 private:
  enum class Inside : std::uint8_t { dict, array };
  static constexpr std::size_t kDepthLimit = 32;

  void skipBlanks() {
    const auto at = rest_.find_first_not_of(" \t\r\n");
    rest_.remove_prefix(std::min(at, rest_.size()));
  }
  bool take(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }
  bool skipPast(std::string_view text) {
    const auto at = rest_.find(text);
    if (at == std::string_view::npos) return false;
    rest_.remove_prefix(at + text.size());
    return true;
  }

  bool prolog() {
    skipBlanks();
    if (rest_.starts_with("<?xml")) {
      const auto head = rest_.substr(0, rest_.find('>'));
      const bool usual =
          head.find("encoding") == std::string_view::npos || head.find("UTF-8") != std::string_view::npos;
      if (!usual || !skipPast("?>")) return false;
      skipBlanks();
    }
    if (rest_.starts_with("<!DOCTYPE")) {
      if (rest_.substr(0, rest_.find('>')).find('[') != std::string_view::npos || !skipPast(">")) return false;
      skipBlanks();
    }
    if (!rest_.starts_with("<plist") || !skipPast(">")) return false;
    skipBlanks();
    if (!take("<dict>")) return false;
    return open(Inside::dict);
  }

  bool open(Inside kind) {
    if (depth_ == kDepthLimit) return false;
    stack_[depth_++] = kind;
    expectsKey_ = kind == Inside::dict;
    return true;
  }
  bool close(Inside kind) {
    const bool fits = stack_[depth_ - 1] == kind && (kind == Inside::array || expectsKey_);
    if (!fits) return false;
    --depth_;
    valueEnds();
    return true;
  }
  void valueEnds() {
    expectsKey_ = depth_ > 0 && stack_[depth_ - 1] == Inside::dict;
    current_ = nullptr;
  }

  bool element() {
    skipBlanks();
    if (rest_.starts_with("<!--")) return skipPast("-->");
    const auto end = rest_.find('>');
    if (end == std::string_view::npos || rest_.front() != '<') return false;
    const auto tag = rest_.substr(1, end - 1);
    rest_.remove_prefix(end + 1);
    if (tag == "/dict") return close(Inside::dict);
    if (tag == "/array") return close(Inside::array);
    const bool inDict = stack_[depth_ - 1] == Inside::dict;
    if (inDict && expectsKey_) return tag == "key" && key();
    if (tag == "dict") return open(Inside::dict);
    if (tag == "array") return open(Inside::array);
    return value(tag);
  }

  std::optional<std::string_view> content(std::string_view closing) {
    const auto text = rest_.substr(0, rest_.find('<'));
    rest_.remove_prefix(text.size());
    if (!take(closing)) return std::nullopt;
    return text;
  }

  bool key() {
    const auto text = content("</key>");
    if (!text) return false;
    current_ = depth_ == 1 ? wantedFor(wanted_, *text) : nullptr;
    expectsKey_ = false;
    return true;
  }

  bool value(std::string_view tag) {
    bool usual = true;
    if (tag == "string") {
      const auto text = content("</string>");
      usual = text && (current_ == nullptr || take(*current_, *text));
    } else if (tag == "string/") {
      usual = current_ == nullptr || keep(*current_, "");
    } else if (tag == "integer") {
      usual = content("</integer>").has_value();
    } else if (tag == "real") {
      usual = content("</real>").has_value();
    } else if (tag == "date") {
      usual = content("</date>").has_value();
    } else if (tag == "data") {
      usual = content("</data>").has_value();
    } else {
      usual = tag == "true/" || tag == "false/" || tag == "dict/" || tag == "array/" || tag == "data/";
    }
    valueEnds();
    return usual;
  }

  static bool take(const WantedString& wanted, std::string_view text) {
    if (!isAscii(text)) return false;
    auto plain = withoutEntities(text);
    return plain && keep(wanted, std::move(*plain));
  }

  std::string_view rest_;
  std::span<const WantedString> wanted_;
  std::array<Inside, kDepthLimit> stack_{};
  std::size_t depth_ = 0;
  bool expectsKey_ = false;
  const WantedString* current_ = nullptr;
};

// The binary form: a trailer, a table of offsets, and the objects themselves.
class BinaryScan {
 public:
  BinaryScan(std::string_view bytes, std::span<const WantedString> wanted) : bytes_(bytes), wanted_(wanted) {}

  bool run() {
    if (!trailer()) return false;
    const auto top = object(topObject_);
    if (!top || marker(*top) != kDict) return false;
    std::size_t at = *top;
    const auto count = lengthAt(at);
    if (!count || *count > objectCount_ || !fits(at, *count * 2 * referenceSize_)) return false;
    for (std::size_t i = 0; i < *count; ++i)
      if (!entry(at + i * referenceSize_, at + (*count + i) * referenceSize_)) return false;
    return true;
  }

 private:
  static constexpr std::size_t kTrailer = 32;
  static constexpr std::size_t kHeader = 8;
  static constexpr unsigned kAsciiString = 0x5;
  static constexpr unsigned kDict = 0xD;

  [[nodiscard]] bool fits(std::size_t at, std::size_t length) const {
    return at <= objectsEnd_ && length <= objectsEnd_ - at;
  }
  [[nodiscard]] unsigned marker(std::size_t at) const { return static_cast<std::uint8_t>(bytes_[at]) >> 4U; }

  // Big-endian, of 1 to 8 bytes that are known to be there.
  [[nodiscard]] std::uint64_t number(std::size_t at, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = (value << 8U) | static_cast<std::uint8_t>(bytes_[at + i]);
    return value;
  }

  bool trailer() {
    if (bytes_.size() < kHeader + kTrailer) return false;
    const auto at = bytes_.size() - kTrailer;
    offsetSize_ = static_cast<std::uint8_t>(bytes_[at + 6]);
    referenceSize_ = static_cast<std::uint8_t>(bytes_[at + 7]);
    const auto isSize = [](std::size_t size) { return size >= 1 && size <= 8; };
    if (!isSize(offsetSize_) || !isSize(referenceSize_)) return false;
    const auto count = number(at + 8, 8);
    const auto top = number(at + 16, 8);
    const auto table = number(at + 24, 8);
    if (table < kHeader || table > at || count == 0 || count > (at - table) / offsetSize_ || top >= count) return false;
    objectCount_ = static_cast<std::size_t>(count);
    topObject_ = static_cast<std::size_t>(top);
    objectsEnd_ = static_cast<std::size_t>(table);
    return std::ranges::all_of(std::views::iota(std::size_t{0}, objectCount_),
                               [&](std::size_t i) { return object(i).has_value(); });
  }

  [[nodiscard]] std::optional<std::size_t> object(std::uint64_t index) const {
    if (index >= objectCount_) return std::nullopt;
    const auto offset = number(objectsEnd_ + static_cast<std::size_t>(index) * offsetSize_, offsetSize_);
    if (offset < kHeader || offset >= objectsEnd_) return std::nullopt;
    return static_cast<std::size_t>(offset);
  }

  // The length of the string or dictionary at `at`, which moves behind it.
  [[nodiscard]] std::optional<std::size_t> lengthAt(std::size_t& at) const {
    const auto low = static_cast<std::uint8_t>(bytes_[at++]) & 0xFU;
    if (low != 0xF) return low;
    if (!fits(at, 1) || marker(at) != 0x1) return std::nullopt;
    const std::size_t size = std::size_t{1} << (static_cast<std::uint8_t>(bytes_[at++]) & 0xFU);
    if (size > 8 || !fits(at, size)) return std::nullopt;
    const auto length = number(at, size);
    at += size;
    if (length > bytes_.size()) return std::nullopt;
    return static_cast<std::size_t>(length);
  }

  [[nodiscard]] std::optional<std::string_view> asciiString(std::size_t at) const {
    const auto length = lengthAt(at);
    if (!length || !fits(at, *length)) return std::nullopt;
    return bytes_.substr(at, *length);
  }

  bool entry(std::size_t keyAt, std::size_t valueAt) {
    const auto key = object(number(keyAt, referenceSize_));
    const auto value = object(number(valueAt, referenceSize_));
    if (!key || !value) return false;
    if (marker(*key) != kAsciiString) return true;  // none of the wanted keys is written otherwise
    const auto name = asciiString(*key);
    if (!name) return false;
    const auto* wanted = wantedFor(wanted_, *name);
    if (wanted == nullptr) return true;
    constexpr unsigned kWideString = 0x6;
    if (marker(*value) == kWideString) return false;
    if (marker(*value) != kAsciiString) return true;
    const auto text = asciiString(*value);
    return text && isAscii(*text) && keep(*wanted, std::string(*text));
  }

  std::string_view bytes_;
  std::span<const WantedString> wanted_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::size_t objectCount_ = 0;
  std::size_t topObject_ = 0;
  std::size_t objectsEnd_ = 0;  // where the table of offsets begins
};

}  // namespace

bool scanPlistStrings(std::string_view bytes, std::span<const WantedString> wanted) {
  if (bytes.starts_with("bplist00")) return BinaryScan(bytes, wanted).run();
  return XmlScan(bytes, wanted).run();
}

}  // namespace corvane
