#include "base/json.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "base/utf8.h"

namespace corvane {
namespace {

constexpr std::size_t kMostDepth = 256;
constexpr std::string_view kDomain = "CRVJSON";

// From here on the last of equal keys is found by a set: a hostile object must not cost its square.
constexpr std::size_t kLargeObject = 32;

using simdjson::dom::element_type;

// Makes values of what the parser found, whose depth it has bounded.
class Conversion {
 public:
  [[nodiscard]] bool sawEqualKeys() const { return sawEqualKeys_; }

  JsonValue operator()(simdjson::dom::element element) {
    switch (element.type()) {
      case element_type::NULL_VALUE:
        return nullptr;
      case element_type::BOOL:
        return bool(element);
      case element_type::INT64:
        return std::int64_t(element);
      case element_type::UINT64:
        return static_cast<double>(std::uint64_t(element));
      case element_type::DOUBLE:
        return double(element);
      case element_type::STRING:
        return std::string_view(element);
      case element_type::ARRAY: {
        JsonArray array;
        for (const auto item : simdjson::dom::array(element)) array.push_back((*this)(item));
        return array;
      }
      case element_type::OBJECT:
        return object(element);
    }
    return nullptr;
  }

 private:
  JsonObject object(simdjson::dom::object object) {
    std::vector<JsonObject::Entry> entries;
    for (const auto [key, value] : object) entries.emplace_back(std::string(key), (*this)(value));
    const auto count = entries.size();
    auto made = JsonObject::fromEntries(std::move(entries));
    sawEqualKeys_ = sawEqualKeys_ || made.entries().size() < count;
    return made;
  }

  bool sawEqualKeys_ = false;
};

template <class Writer>
struct Emit {
  Writer& writer;

  void operator()(std::nullptr_t) const { writer.Null(); }
  void operator()(bool value) const { writer.Bool(value); }
  void operator()(std::int64_t value) const { writer.Int64(value); }
  void operator()(double value) const {
    if (std::isfinite(value))
      writer.Double(value);
    else
      writer.Null();
  }
  void operator()(const std::string& value) const {
    withUtf8(value, [this](const char* text, rapidjson::SizeType length) { writer.String(text, length); });
  }
  void operator()(const JsonArray& array) const {
    writer.StartArray();
    for (const auto& item : array) std::visit(*this, item.storage());
    writer.EndArray();
  }
  void operator()(const JsonObject& object) const {
    writer.StartObject();
    for (const auto& [key, value] : object.entries()) {
      withUtf8(key, [this](const char* text, rapidjson::SizeType length) { writer.Key(text, length); });
      std::visit(*this, value.storage());
    }
    writer.EndObject();
  }

  // One text that is no UTF-8 would have the reader refuse all of the document.
  template <class Write>
  static void withUtf8(const std::string& text, Write write) {
    if (isUtf8(text)) return write(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    const auto valid = validUtf8(text);
    write(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
  }
};

template <class Writer>
std::string emit(const JsonValue& value, rapidjson::StringBuffer& buffer, Writer& writer) {
  std::visit(Emit<Writer>{writer}, value.storage());
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace

JsonObject::JsonObject() = default;

JsonObject::JsonObject(std::initializer_list<Entry> entries) {
  for (const auto& [key, value] : entries) set(key, value);
}

JsonObject JsonObject::fromEntries(std::vector<Entry> entries) {
  JsonObject object;
  if (entries.size() < kLargeObject) {
    for (auto& [key, value] : entries) object.set(std::move(key), std::move(value));
    return object;
  }
  std::unordered_set<std::string> seen;
  for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
    if (seen.insert(entry->first).second) object.entries_.push_back(std::move(*entry));
  std::reverse(object.entries_.begin(), object.entries_.end());
  return object;
}

void JsonObject::set(std::string key, JsonValue value) {
  for (auto& entry : entries_) {
    if (entry.first == key) {
      entry.second = std::move(value);
      return;
    }
  }
  entries_.emplace_back(std::move(key), std::move(value));
}

const JsonValue* JsonObject::find(std::string_view key) const {
  for (const auto& entry : entries_)
    if (entry.first == key) return &entry.second;
  return nullptr;
}

bool operator==(const JsonObject& a, const JsonObject& b) { return a.entries_ == b.entries_; }

std::optional<bool> JsonValue::boolean() const {
  const auto* value = std::get_if<bool>(&value_);
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::int64_t> JsonValue::integer() const {
  const auto* value = std::get_if<std::int64_t>(&value_);
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<double> JsonValue::number() const {
  if (const auto whole = integer()) return static_cast<double>(*whole);
  const auto* value = std::get_if<double>(&value_);
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::string_view> JsonValue::string() const {
  const auto* value = std::get_if<std::string>(&value_);
  return value ? std::optional<std::string_view>(*value) : std::nullopt;
}

const JsonValue* JsonValue::find(std::string_view key) const {
  const auto* members = object();
  return members ? members->find(key) : nullptr;
}

namespace {

Result<JsonValue> parse(std::string_view text, Conversion& conversion) {
  simdjson::dom::parser parser;
  // The parser refuses the level that it is given, and does not count an empty innermost array or object.
  if (const auto error = parser.allocate(std::max<std::size_t>(text.size(), 64), kMostDepth + 1))
    return failure(std::string(kDomain), static_cast<int>(error), simdjson::error_message(error));
  simdjson::dom::element root;
  if (const auto error = parser.parse(text.data(), text.size()).get(root))
    return failure(std::string(kDomain), static_cast<int>(error), simdjson::error_message(error));
  return conversion(root);
}

}  // namespace

Result<JsonValue> parseJson(std::string_view text) {
  Conversion conversion;
  return parse(text, conversion);
}

Result<JsonValue> parseJsonOfDistinctKeys(std::string_view text) {
  Conversion conversion;
  auto value = parse(text, conversion);
  if (value && conversion.sawEqualKeys())
    return failure(std::string(kDomain), static_cast<int>(simdjson::TAPE_ERROR), "an object has a key twice");
  return value;
}

std::string writeJson(const JsonValue& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  return emit(value, buffer, writer);
}

std::string writeJsonPretty(const JsonValue& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
  writer.SetIndent(' ', 2);
  return emit(value, buffer, writer);
}

}  // namespace corvane
