#include "core/history/receipt_reader.h"

#include <simdjson.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

#include "core/history/receipt_line_scanner.h"

namespace corvane {
namespace {

namespace ondemand = simdjson::ondemand;

// What one line has told so far. Reading stops at the first field of a wrong kind.
struct Fields {
  PatchingReceipt receipt;
  bool hasLabel = false;
  bool hasTimestamp = false;
  bool hasStatus = false;
  bool hasExitCode = false;
};

std::optional<std::string_view> textOf(ondemand::value& value) {
  std::string_view text;
  if (value.get_string().get(text)) return std::nullopt;
  return text;
}

bool readOptionalText(ondemand::value& value, std::optional<std::string>& out) {
  bool isNull = false;
  if (value.is_null().get(isNull)) return false;
  if (isNull) {
    out.reset();
    return true;
  }
  const auto text = textOf(value);
  if (text) out = *text;
  return text.has_value();
}

bool readTimestamp(ondemand::value& value, Fields& fields) {
  const auto text = textOf(value);
  const auto date = text ? parseIso8601(*text) : std::nullopt;
  if (date) fields.receipt.timestamp = *date;
  return fields.hasTimestamp = date.has_value();
}

bool readStatus(ondemand::value& value, Fields& fields) {
  const auto text = textOf(value);
  const auto status = text ? caseFromRaw<PatchingStatus>(*text) : std::nullopt;
  if (status) fields.receipt.status = *status;
  return fields.hasStatus = status.has_value();
}

bool readStaged(ondemand::value& value, Fields& fields) {
  bool isNull = false;
  if (!value.is_null().get(isNull) && isNull) return true;
  bool staged = false;
  if (value.get_bool().get(staged)) return false;
  fields.receipt.usedStagedInstaller = staged;
  return true;
}

// False when the field has a wrong kind. Unknown fields are passed over.
bool readField(std::string_view key, ondemand::value& value, Fields& fields) {
  if (key == "label") {
    const auto text = textOf(value);
    if (text) fields.receipt.label.text = *text;
    return fields.hasLabel = text.has_value();
  }
  if (key == "timestamp") return readTimestamp(value, fields);
  if (key == "status") return readStatus(value, fields);
  if (key == "version") return readOptionalText(value, fields.receipt.version);
  if (key == "targetVersion") return readOptionalText(value, fields.receipt.targetVersion);
  if (key == "installomatorExitCode")
    return fields.hasExitCode = !value.get_int64().get(fields.receipt.installomatorExitCode);
  if (key == "usedStagedInstaller") return readStaged(value, fields);
  return true;
}

class LineReader {
 public:
  explicit LineReader(std::string_view text) : end_(text.data() + text.size()) {}

  // Empty when the line was read; then `wanted` tells whether it is of the label that was asked for.
  std::string_view read(std::string_view line, const Label* only, PatchingReceipt& out, bool& wanted) {
    ondemand::document document;
    ondemand::object object;
    if (parser_.iterate(padded(line)).get(document) || document.get_object().get(object)) return "it is no JSON object";
    Fields fields;
    for (auto result : object) {
      ondemand::field field;
      if (std::move(result).get(field)) return "it is torn or no JSON";
      std::string_view key;
      if (field.unescaped_key().get(key)) return "it is torn or no JSON";
      if (!readField(key, field.value(), fields)) return "a field has the wrong kind";
      if (only && fields.hasLabel && fields.receipt.label != *only) {
        wanted = false;
        return {};
      }
    }
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) return "something follows the object";
    if (!fields.hasLabel || !fields.hasTimestamp || !fields.hasStatus || !fields.hasExitCode)
      return "a field is missing";
    wanted = true;
    out = std::move(fields.receipt);
    return {};
  }

 private:
  // The parser reads some bytes past a line. Behind the last lines there are none, so these are copied.
  simdjson::padded_string_view padded(std::string_view line) {
    const auto behind = static_cast<std::size_t>(end_ - line.data());
    if (behind >= line.size() + simdjson::SIMDJSON_PADDING)
      return simdjson::padded_string_view(line.data(), line.size(), behind);
    copy_.reserve(line.size() + simdjson::SIMDJSON_PADDING);
    copy_ = line;
    return simdjson::padded_string_view(copy_.data(), copy_.size(), copy_.capacity());
  }

  const char* end_;
  ondemand::parser parser_;
  std::string copy_;
};

// The text loses that line and its line break.
std::string_view takeLastLine(std::string_view& text) {
  const auto* const found = static_cast<const char*>(::memrchr(text.data(), '\n', text.size()));
  const auto start = found ? static_cast<std::size_t>(found + 1 - text.data()) : 0;
  const auto line = text.substr(start);
  text = text.substr(0, found ? start - 1 : 0);
  return line;
}

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

std::vector<PatchingReceipt> parseReceipts(std::string_view text, const Label* only,
                                           const std::function<void(std::size_t, std::string_view)>& damaged) {
  std::vector<PatchingReceipt> receipts;
  LineReader reader(text);
  auto number = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
  // Growing step by step would cost more than all the parsing.
  if (!only) receipts.reserve(number);
  for (; number > 0; --number) {
    const auto line = takeLastLine(text);
    if (isBlank(line)) continue;
    auto& receipt = receipts.emplace_back();
    auto scanned = scanReceiptLine(line, only, receipt);
    if (scanned == ScannedLine::notRecognised) {
      receipt = {};
      bool wanted = false;
      const auto trouble = reader.read(line, only, receipt, wanted);
      if (!trouble.empty()) damaged(number, trouble);
      if (trouble.empty() && wanted) scanned = ScannedLine::receipt;
    }
    if (scanned != ScannedLine::receipt) receipts.pop_back();
  }
  return receipts;
}

}  // namespace corvane
