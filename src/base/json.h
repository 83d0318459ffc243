// JSON as values: what small files and messages need. Files of many lines are read with simdjson where
// they are read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "base/error.h"

namespace corvane {

class JsonValue;
using JsonArray = std::vector<JsonValue>;

// Keeps the order of its keys; the last of equal keys wins on reading. Linear search: objects are small.
class JsonObject {
 public:
  using Entry = std::pair<std::string, JsonValue>;
  JsonObject();
  JsonObject(std::initializer_list<Entry> entries);
  // In the order given; of equal keys the last, without comparing each with each.
  [[nodiscard]] static JsonObject fromEntries(std::vector<Entry> entries);

  void set(std::string key, JsonValue value);
  [[nodiscard]] const JsonValue* find(std::string_view key) const;
  [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }
  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }
  friend bool operator==(const JsonObject&, const JsonObject&);

 private:
  std::vector<Entry> entries_;
};

class JsonValue {
 public:
  using Storage = std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, JsonArray, JsonObject>;

  JsonValue() : value_(nullptr) {}
  JsonValue(std::nullptr_t) : value_(nullptr) {}
  JsonValue(bool value) : value_(value) {}
  JsonValue(int value) : value_(static_cast<std::int64_t>(value)) {}
  JsonValue(std::int64_t value) : value_(value) {}
  JsonValue(std::size_t value) : value_(static_cast<std::int64_t>(value)) {}
  JsonValue(double value) : value_(value) {}
  JsonValue(const char* value) : value_(std::string(value)) {}
  JsonValue(std::string_view value) : value_(std::string(value)) {}
  JsonValue(std::string value) : value_(std::move(value)) {}
  JsonValue(JsonArray value) : value_(std::move(value)) {}
  JsonValue(JsonObject value) : value_(std::move(value)) {}

  // Absent when the value is of another kind. A whole number reads as a double too.
  [[nodiscard]] std::optional<bool> boolean() const;
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  [[nodiscard]] std::optional<double> number() const;
  [[nodiscard]] std::optional<std::string_view> string() const;
  [[nodiscard]] const JsonArray* array() const { return std::get_if<JsonArray>(&value_); }
  [[nodiscard]] const JsonObject* object() const { return std::get_if<JsonObject>(&value_); }
  [[nodiscard]] bool isNull() const { return std::holds_alternative<std::nullptr_t>(value_); }
  [[nodiscard]] const Storage& storage() const { return value_; }

  // Member of an object; null when this is none or has no such key.
  [[nodiscard]] const JsonValue* find(std::string_view key) const;

  friend bool operator==(const JsonValue&, const JsonValue&) = default;

 private:
  Storage value_;
};

// Strict JSON, UTF-8 only, at most 256 levels deep. The error's text tells what is wrong, for the log.
[[nodiscard]] Result<JsonValue> parseJson(std::string_view text);
// The same for what must mean one thing to every reader: an object with two equal keys is an error.
[[nodiscard]] Result<JsonValue> parseJsonOfDistinctKeys(std::string_view text);

// One line without white space, or indented by two blanks for people. Bytes that are no UTF-8 become U+FFFD, numbers
// that JSON has no word for null: what is written can always be read.
[[nodiscard]] std::string writeJson(const JsonValue& value);
[[nodiscard]] std::string writeJsonPretty(const JsonValue& value);

}  // namespace corvane
