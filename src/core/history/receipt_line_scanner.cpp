#include "core/history/receipt_line_scanner.h"

#include <array>
#include <chrono>

namespace corvane {
namespace {

// So many digits fit into 64 bits whatever they are.
constexpr std::size_t kMostDigits = 18;

// The bytes that stand for themselves in a JSON text: ASCII without quote, backslash and control characters.
constexpr auto kPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t c = 0x20; c < 0x80; ++c) plain[c] = c != '"' && c != '\\';
  return plain;
}();

// Moves forward over a line; every step tells whether it found what it was asked for.
class Scanner {
 public:
  explicit Scanner(std::string_view line) : at_(line.data()), end_(line.data() + line.size()) {}

  bool take(std::string_view expected) {
    if (!std::string_view(at_, end_).starts_with(expected)) return false;
    at_ += expected.size();
    return true;
  }

  // Up to the closing quote and past it.
  bool text(std::string_view& out) {
    const char* const start = at_;
    while (at_ != end_ && kPlain[static_cast<unsigned char>(*at_)]) ++at_;
    out = std::string_view(start, at_);
    return take("\"");
  }

  bool integer(std::int64_t& out) {
    const bool negative = take("-");
    const char* const start = at_;
    std::int64_t value = 0;
    while (at_ != end_ && *at_ >= '0' && *at_ <= '9' && at_ - start < std::ptrdiff_t{kMostDigits})
      value = value * 10 + (*at_++ - '0');
    const auto digits = at_ - start;
    out = negative ? -value : value;
    return digits > 0 && (*start != '0' || digits == 1);
  }

  bool boolean(bool& out) {
    out = take("true");
    return out || take("false");
  }

  [[nodiscard]] bool atEnd() const { return at_ == end_; }

 private:
  const char* at_;
  const char* end_;
};

// Two digits, or something that no part of a date reaches.
unsigned pair(const char* digits) {
  const auto tens = static_cast<unsigned>(digits[0] - '0');
  const auto ones = static_cast<unsigned>(digits[1] - '0');
  return tens > 9 || ones > 9 ? 1'000'000 : tens * 10 + ones;
}

// "2026-11-22T21:04:42Z", the usual date, without the general reader's checks for other forms.
std::optional<Date> wholeSecond(std::string_view text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
  if (text.size() != kForm.size()) return std::nullopt;
  for (const std::size_t mark : {4, 7, 10, 13, 16, 19})
    if (text[mark] != kForm[mark]) return std::nullopt;
  const char* const at = text.data();
  const unsigned year = pair(at) * 100 + pair(at + 2);
  const unsigned hour = pair(at + 11);
  const unsigned minute = pair(at + 14);
  const unsigned second = pair(at + 17);
  if (year > 9999 || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(year)), std::chrono::month(pair(at + 5)),
                                        std::chrono::day(pair(at + 8)));
  if (pair(at + 5) > 12 || pair(at + 8) > 31 || !day.ok()) return std::nullopt;
  return std::chrono::sys_days(day) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second);
}

bool date(std::string_view text, Date& out) {
  const auto usual = wholeSecond(text);
  const auto date = usual ? usual : parseIso8601(text);
  if (date) out = *date;
  return date.has_value();
}

bool status(std::string_view text, PatchingStatus& out) {
  const auto status = caseFromRaw<PatchingStatus>(text);
  if (status) out = *status;
  return status.has_value();
}

bool optionalText(Scanner& scanner, std::string_view name, std::optional<std::string>& out) {
  if (!scanner.take(name)) return true;
  std::string_view text;
  if (!scanner.text(text)) return false;
  out.emplace(text);
  return true;
}

bool optionalFlag(Scanner& scanner, std::string_view name, std::optional<bool>& out) {
  if (!scanner.take(name)) return true;
  return scanner.boolean(out.emplace());
}

bool afterLabel(Scanner& scanner, PatchingReceipt& out) {
  std::string_view text;
  return scanner.take(R"(,"timestamp":")") && scanner.text(text) && date(text, out.timestamp) &&
         scanner.take(R"(,"status":")") && scanner.text(text) && status(text, out.status) &&
         optionalText(scanner, R"(,"version":")", out.version) &&
         optionalText(scanner, R"(,"targetVersion":")", out.targetVersion) &&
         scanner.take(R"(,"installomatorExitCode":)") && scanner.integer(out.installomatorExitCode) &&
         optionalFlag(scanner, R"(,"usedStagedInstaller":)", out.usedStagedInstaller) && scanner.take("}") &&
         scanner.atEnd();
}

}  // namespace

ScannedLine scanReceiptLine(std::string_view line, const Label* only, PatchingReceipt& out) {
  Scanner scanner(line);
  std::string_view label;
  if (!scanner.take(R"({"label":")") || !scanner.text(label)) return ScannedLine::notRecognised;
  if (only && label != only->text) return ScannedLine::otherLabel;
  out.label.text = label;
  return afterLabel(scanner, out) ? ScannedLine::receipt : ScannedLine::notRecognised;
}

}  // namespace corvane
