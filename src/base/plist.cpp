#include "base/plist.h"

#include <plist/plist.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "base/plist_readers.h"
#include "base/utf8.h"

namespace corvane {
namespace {

template <class T>
std::optional<T> held(const PlistValue::Storage& storage) {
  const auto* value = std::get_if<T>(&storage);
  return value ? std::optional(*value) : std::nullopt;
}

struct FreeNode {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

// The library keeps whole seconds in 32 bits: 1932 to 2069. Dates beyond are held at that edge.
Node dateNode(Date date) {
  constexpr Duration reference = 978307200s;
  const auto since2001 = date.time_since_epoch() - reference;
  const auto seconds = std::chrono::floor<std::chrono::seconds>(since2001);
  const auto held = std::clamp<std::int64_t>(seconds.count(), std::numeric_limits<std::int32_t>::min(),
                                             std::numeric_limits<std::int32_t>::max());
  return Node(
      plist_new_date(static_cast<std::int32_t>(held), static_cast<std::int32_t>((since2001 - seconds).count())));
}

struct MakeNode {
  // A property list has no word for nothing; an empty text loses least.
  Node operator()(std::monostate) const { return Node(plist_new_string("")); }
  Node operator()(bool value) const { return Node(plist_new_bool(value ? 1 : 0)); }
  Node operator()(std::int64_t value) const { return Node(plist_new_uint(static_cast<std::uint64_t>(value))); }
  Node operator()(double value) const { return Node(plist_new_real(value)); }
  Node operator()(const std::string& value) const { return Node(plist_new_string(validUtf8(value).c_str())); }
  Node operator()(const PlistData& value) const { return Node(plist_new_data(value.bytes.data(), value.bytes.size())); }
  Node operator()(Date value) const { return dateNode(value); }
  Node operator()(const PlistArray& items) const {
    Node node(plist_new_array());
    for (const auto& item : items) plist_array_append_item(node.get(), std::visit(*this, item.storage()).release());
    return node;
  }
  Node operator()(const PlistDict& entries) const {
    Node node(plist_new_dict());
    for (const auto& [key, value] : entries)
      plist_dict_set_item(node.get(), validUtf8(key).c_str(), std::visit(*this, value.storage()).release());
    return node;
  }
};

// Whether the readers would take it back.
bool fits(const PlistValue& value, int depth) {
  if (depth > kMostPlistDepth) return false;
  if (const auto* items = value.array())
    return std::ranges::all_of(*items, [depth](const PlistValue& item) { return fits(item, depth + 1); });
  if (const auto* entries = value.dict())
    return std::ranges::all_of(*entries, [depth](const auto& entry) { return fits(entry.second, depth + 1); });
  return true;
}

}  // namespace

std::optional<bool> PlistValue::boolean() const { return held<bool>(value_); }
std::optional<std::int64_t> PlistValue::integer() const { return held<std::int64_t>(value_); }
std::optional<Date> PlistValue::date() const { return held<Date>(value_); }

std::optional<double> PlistValue::number() const {
  if (const auto whole = integer()) return static_cast<double>(*whole);
  return held<double>(value_);
}

std::optional<std::string_view> PlistValue::string() const {
  const auto* value = std::get_if<std::string>(&value_);
  return value ? std::optional<std::string_view>(*value) : std::nullopt;
}

std::optional<std::string_view> PlistValue::data() const {
  const auto* value = std::get_if<PlistData>(&value_);
  return value ? std::optional<std::string_view>(value->bytes) : std::nullopt;
}

Result<PlistDocument> parsePlist(std::string_view bytes) {
  const auto format = bytes.starts_with("bplist00") ? PlistFormat::binary : PlistFormat::xml;
  auto root = format == PlistFormat::binary ? readBinaryPlist(bytes) : readXmlPlist(bytes);
  if (!root) return std::unexpected(root.error());
  return PlistDocument{.root = std::move(*root), .format = format};
}

Result<std::string> writePlist(const PlistValue& value, PlistFormat format) {
  if (!fits(value, 0)) return plistFailure("the values are nested too deeply for a property list");
  const Node node = std::visit(MakeNode{}, value.storage());
  char* bytes = nullptr;
  std::uint32_t length = 0;
  if (format == PlistFormat::xml)
    plist_to_xml(node.get(), &bytes, &length);
  else
    plist_to_bin(node.get(), &bytes, &length);
  std::string out(bytes ? bytes : "", bytes ? length : 0);
  if (format == PlistFormat::xml)
    plist_to_xml_free(bytes);
  else
    plist_to_bin_free(bytes);
  // An empty file would read as damaged, and the settings that stood in it would be gone.
  if (out.empty()) return plistFailure("the values could not be written as a property list");
  return out;
}

}  // namespace corvane
