// Property lists as values, XML and binary.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "base/date.h"
#include "base/error.h"

namespace corvane {

class PlistValue;
using PlistArray = std::vector<PlistValue>;
using PlistDict = std::map<std::string, PlistValue, std::less<>>;

// Raw bytes, kept apart from text.
struct PlistData {
  std::string bytes;
  friend bool operator==(const PlistData&, const PlistData&) = default;
};

class PlistValue {
 public:
  using Storage =
      std::variant<std::monostate, bool, std::int64_t, double, std::string, PlistData, Date, PlistArray, PlistDict>;

  PlistValue() = default;
  PlistValue(bool value) : value_(value) {}
  PlistValue(int value) : value_(static_cast<std::int64_t>(value)) {}
  PlistValue(std::int64_t value) : value_(value) {}
  PlistValue(double value) : value_(value) {}
  PlistValue(const char* value) : value_(std::string(value)) {}
  PlistValue(std::string_view value) : value_(std::string(value)) {}
  PlistValue(std::string value) : value_(std::move(value)) {}
  PlistValue(PlistData value) : value_(std::move(value)) {}
  PlistValue(Date value) : value_(value) {}
  PlistValue(PlistArray value) : value_(std::move(value)) {}
  PlistValue(PlistDict value) : value_(std::move(value)) {}

  // Absent when the value is of another kind; kinds are never converted here, except that a whole number
  // reads as a double too.
  [[nodiscard]] std::optional<bool> boolean() const;
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  [[nodiscard]] std::optional<double> number() const;
  [[nodiscard]] std::optional<std::string_view> string() const;
  [[nodiscard]] std::optional<std::string_view> data() const;
  [[nodiscard]] std::optional<Date> date() const;
  [[nodiscard]] const PlistArray* array() const { return std::get_if<PlistArray>(&value_); }
  [[nodiscard]] const PlistDict* dict() const { return std::get_if<PlistDict>(&value_); }
  [[nodiscard]] const Storage& storage() const { return value_; }

  friend bool operator==(const PlistValue&, const PlistValue&) = default;

 private:
  Storage value_;
};

enum class PlistFormat { xml, binary };

struct PlistDocument {
  PlistValue root;
  PlistFormat format = PlistFormat::xml;
};

// Reads either form by its first bytes. Fails on anything damaged, also where the parser underneath would
// be lenient with a truncated XML text. Never aborts on hostile bytes.
[[nodiscard]] Result<PlistDocument> parsePlist(std::string_view bytes);

// Fractions of a second survive only in the binary form. Text that is no UTF-8 is written with U+FFFD in it. Fails
// where the value has no form, as one nested too deep; what is given is never empty.
[[nodiscard]] Result<std::string> writePlist(const PlistValue& value, PlistFormat format);

}  // namespace corvane
