#include "core/history/receipt_reader.h"

#include <simdjson.h>

#include <optional>
#include <string>

#include "core/history/json_lines.h"

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

// False when the field has a wrong kind. Unknown fields are passed over; so is a key written with escapes, which
// the helper never does.
bool readField(ondemand::raw_json_string key, ondemand::value& value, Fields& fields) {
  if (key.unsafe_is_equal("label")) {
    const auto text = textOf(value);
    if (text) fields.receipt.label.text = *text;
    return fields.hasLabel = text.has_value();
  }
  if (key.unsafe_is_equal("timestamp")) return readTimestamp(value, fields);
  if (key.unsafe_is_equal("status")) return readStatus(value, fields);
  if (key.unsafe_is_equal("version")) return readOptionalText(value, fields.receipt.version);
  if (key.unsafe_is_equal("targetVersion")) return readOptionalText(value, fields.receipt.targetVersion);
  if (key.unsafe_is_equal("installomatorExitCode"))
    return fields.hasExitCode = !value.get_int64().get(fields.receipt.installomatorExitCode);
  if (key.unsafe_is_equal("usedStagedInstaller")) return readStaged(value, fields);
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
      if (!readField(field.key(), field.value(), fields)) return "a field has the wrong kind";
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

}  // namespace

std::vector<PatchingReceipt> parseReceipts(std::string_view text, const Label* only,
                                           const std::function<void(std::size_t, std::string_view)>& damaged) {
  std::vector<PatchingReceipt> receipts;
  // Growing step by step would cost more than all the parsing.
  std::size_t lines = 0;
  if (!only) forEachLine(text, [&lines](std::string_view, std::size_t) { ++lines; });
  receipts.reserve(lines);
  LineReader reader(text);
  forEachLine(text, [&](std::string_view line, std::size_t number) {
    PatchingReceipt receipt;
    bool wanted = false;
    const auto trouble = reader.read(line, only, receipt, wanted);
    if (!trouble.empty())
      damaged(number, trouble);
    else if (wanted)
      receipts.push_back(std::move(receipt));
  });
  return receipts;
}

}  // namespace corvane
