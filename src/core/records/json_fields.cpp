#include "core/records/json_fields.h"

#include <utility>

namespace corvane {
namespace {

constexpr auto kDomain = "CRVRecords";
constexpr int kDamaged = 1;

// Dates further off than this would overflow their count of microseconds.
constexpr double kMostSecondsSince2001 = 8.0e12;

}  // namespace

JsonFieldReader::JsonFieldReader(const JsonValue& value, std::string_view record)
    : object_(value.object()), record_(record) {
  if (!object_) error_ = Error{kDomain, kDamaged, record_ + " is no object"};
}

void JsonFieldReader::fail(std::string_view key, std::string_view what) {
  if (error_) return;
  error_ = Error{kDomain, kDamaged, record_ + ": field " + std::string(key) + " " + std::string(what)};
}

bool JsonFieldReader::present(std::string_view key) const {
  const auto* value = object_ ? object_->find(key) : nullptr;
  return value && !value->isNull();
}

JsonValue JsonFieldReader::at(std::string_view key) const { return present(key) ? *object_->find(key) : JsonValue(); }

template <class T>
T JsonFieldReader::required(std::string_view key, std::optional<T> found, std::string_view kind) {
  if (found) return std::move(*found);
  fail(key, present(key) ? "is no " + std::string(kind) : std::string("is missing"));
  return T{};
}

std::string JsonFieldReader::text(std::string_view key) {
  const auto value = at(key);
  const auto found = value.string();
  return required(key, found ? std::optional(std::string(*found)) : std::nullopt, "text");
}

bool JsonFieldReader::flag(std::string_view key) { return required(key, at(key).boolean(), "boolean"); }

std::int64_t JsonFieldReader::integer(std::string_view key) { return required(key, at(key).integer(), "whole number"); }

std::vector<std::string> JsonFieldReader::texts(std::string_view key) {
  const auto value = at(key);
  std::vector<std::string> texts;
  if (!value.array()) fail(key, present(key) ? "is no list" : "is missing");
  for (const auto& item : value.array() ? *value.array() : JsonArray{}) {
    if (const auto text = item.string())
      texts.emplace_back(*text);
    else
      fail(key, "holds something that is no text");
  }
  return texts;
}

Labels JsonFieldReader::labels(std::string_view key) {
  Labels labels;
  for (auto& text : texts(key)) labels.emplace_back(std::move(text));
  return labels;
}

std::map<std::string, std::string> JsonFieldReader::textMap(std::string_view key) {
  const auto value = at(key);
  std::map<std::string, std::string> map;
  if (!value.object()) fail(key, present(key) ? "is no object" : "is missing");
  for (const auto& [name, item] : value.object() ? value.object()->entries() : std::vector<JsonObject::Entry>{}) {
    if (const auto text = item.string())
      map.emplace(name, *text);
    else
      fail(key, "holds something that is no text");
  }
  return map;
}

Date JsonFieldReader::isoDate(std::string_view key) {
  return required(key, parseIso8601(text(key)), "date in ISO 8601");
}

Date JsonFieldReader::dateSince2001(std::string_view key) {
  const auto seconds = required(key, at(key).number(), "number of seconds");
  if (seconds > -kMostSecondsSince2001 && seconds < kMostSecondsSince2001) return dateFromSecondsSince2001(seconds);
  fail(key, "is out of range");
  return {};
}

std::optional<std::string> JsonFieldReader::optionalText(std::string_view key) {
  return present(key) ? std::optional(text(key)) : std::nullopt;
}

std::optional<bool> JsonFieldReader::optionalFlag(std::string_view key) {
  return present(key) ? std::optional(flag(key)) : std::nullopt;
}

std::optional<std::int64_t> JsonFieldReader::optionalInteger(std::string_view key) {
  return present(key) ? std::optional(integer(key)) : std::nullopt;
}

std::optional<Date> JsonFieldReader::optionalDateSince2001(std::string_view key) {
  return present(key) ? std::optional(dateSince2001(key)) : std::nullopt;
}

JsonArray labelTexts(const Labels& labels) {
  JsonArray texts;
  for (const auto& label : labels) texts.emplace_back(label.text);
  return texts;
}

}  // namespace corvane
