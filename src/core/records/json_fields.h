// Reading and writing the fields of one JSON object. The first field that is missing or of another kind fails
// the whole record, with a text that names both.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/date.h"
#include "base/json.h"
#include "core/records/app_info.h"
#include "core/records/enumerations.h"

namespace corvane {

class JsonFieldReader {
 public:
  // `record` names the kind of record in error texts.
  JsonFieldReader(const JsonValue& value, std::string_view record);

  // A required field, present and of its kind. What is given back after a failure means nothing.
  [[nodiscard]] std::string text(std::string_view key);
  [[nodiscard]] bool flag(std::string_view key);
  [[nodiscard]] std::int64_t integer(std::string_view key);
  [[nodiscard]] Label label(std::string_view key) { return Label(text(key)); }
  [[nodiscard]] std::vector<std::string> texts(std::string_view key);
  [[nodiscard]] Labels labels(std::string_view key);
  // An object whose members are all texts.
  [[nodiscard]] std::map<std::string, std::string> textMap(std::string_view key);
  [[nodiscard]] Date isoDate(std::string_view key);
  [[nodiscard]] Date dateSince2001(std::string_view key);
  template <class E>
  [[nodiscard]] E oneOf(std::string_view key) {
    const auto found = caseFromRaw<E>(text(key));
    if (!found) fail(key, "holds no known value");
    return found.value_or(E{});
  }

  // Absent when the field is missing or null.
  [[nodiscard]] std::optional<std::string> optionalText(std::string_view key);
  [[nodiscard]] std::optional<bool> optionalFlag(std::string_view key);
  [[nodiscard]] std::optional<std::int64_t> optionalInteger(std::string_view key);
  [[nodiscard]] std::optional<Date> optionalDateSince2001(std::string_view key);
  template <class E>
  [[nodiscard]] std::optional<E> optionalOneOf(std::string_view key) {
    return present(key) ? std::optional(oneOf<E>(key)) : std::nullopt;
  }
  // A nested record, read by `read(const JsonValue&)`, which gives a Result.
  template <class Read>
  [[nodiscard]] auto optionalRecord(std::string_view key, Read read)
      -> std::optional<typename decltype(read(JsonValue()))::value_type> {
    if (!present(key)) return std::nullopt;
    auto record = read(*object_->find(key));
    if (record) return std::move(*record);
    fail(key, "is damaged: " + record.error().text);
    return std::nullopt;
  }

  void fail(std::string_view key, std::string_view what);

  // The record, or the first failure.
  template <class T>
  [[nodiscard]] Result<T> finish(T record) {
    if (error_) return std::unexpected(*error_);
    return record;
  }

 private:
  [[nodiscard]] bool present(std::string_view key) const;
  template <class T>
  [[nodiscard]] T required(std::string_view key, std::optional<T> found, std::string_view kind);
  [[nodiscard]] JsonValue at(std::string_view key) const;

  const JsonObject* object_;
  std::string record_;
  std::optional<Error> error_;
};

// Sets `key` only when there is a value.
template <class T>
void setIfPresent(JsonObject& object, std::string key, const std::optional<T>& value) {
  if (value) object.set(std::move(key), JsonValue(*value));
}

[[nodiscard]] JsonArray labelTexts(const Labels& labels);

}  // namespace corvane
