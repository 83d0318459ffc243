#include "base/manual_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <utility>

namespace corvane {
namespace {

// The plain character, where the formatter would set a typographic one that nobody can type or paste.
constexpr std::string_view escaped(char c) {
  switch (c) {
    case '-':
      return "\\-";
    case '\\':
      return "\\e";
    case '~':
      return "\\(ti";
    case '^':
      return "\\(ha";
    case '`':
      return "\\(ga";
    case '\'':
      return "\\(aq";
    default:
      return {};
  }
}

std::string roff(std::string_view line) {
  std::string text = line.starts_with('.') ? "\\&" : "";
  for (const char& c : line) {
    const auto escape = escaped(c);
    text += escape.empty() ? std::string_view(&c, 1) : escape;
  }
  return text;
}

}  // namespace

ManualPage::ManualPage(std::string_view name, int section, std::string_view summary, std::string_view origin) {
  std::string title(name);
  std::ranges::transform(title, title.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  text_ = fmt::format(".\\\" {}\n.TH {} {} \"\" Corvane\n", origin, title, section);
  heading("NAME");
  text_ += fmt::format("{} \\- {}\n", name, roff(summary));
}

ManualPage& ManualPage::heading(std::string_view title) {
  text_ += fmt::format(".SH {}\n", title);
  underHeading_ = true;
  return *this;
}

ManualPage& ManualPage::subheading(std::string_view title) {
  text_ += fmt::format(".SS {}\n", title);
  underHeading_ = true;
  return *this;
}

// A heading leaves its own gap.
void ManualPage::beginParagraph() {
  if (!std::exchange(underHeading_, false)) text_ += ".PP\n";
}

ManualPage& ManualPage::paragraph(std::string_view text) {
  beginParagraph();
  text_ += roff(text) + "\n";
  return *this;
}

ManualPage& ManualPage::verbatim(std::string_view text) {
  beginParagraph();
  text_ += ".nf\n";
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) text_ += line.empty() ? ".sp\n" : roff(line) + "\n";
  text_ += ".fi\n";
  return *this;
}

ManualPage& ManualPage::entries(std::span<const Entry> entries) {
  underHeading_ = false;
  for (const auto& [term, text] : entries) text_ += fmt::format(".TP\n.I {}\n{}\n", roff(term), roff(text));
  return *this;
}

}  // namespace corvane
