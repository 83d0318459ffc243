// Manual pages, written from what the programs say of themselves, so that page and --help cannot tell two stories.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace corvane {

// A page in the language of man(7). Texts come as people read them; what would be a command of that language is
// escaped. Bears no date, so that the same program makes the same page on every day. A value, any thread.
class ManualPage {
 public:
  struct Entry {
    std::string term;
    std::string text;
  };

  // `origin` stands in a comment at the top; `section` is 1 for commands, 8 for what an administrator runs.
  ManualPage(std::string_view name, int section, std::string_view summary, std::string_view origin);

  ManualPage& heading(std::string_view title);
  ManualPage& subheading(std::string_view title);
  // Filled to the width of the reader's screen.
  ManualPage& paragraph(std::string_view text);
  // Each line a line, as help is laid out; an empty one is a gap.
  ManualPage& verbatim(std::string_view text);
  // Each term with its text set in below it.
  ManualPage& entries(std::span<const Entry> entries);

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  void beginParagraph();

  std::string text_;
  bool underHeading_ = false;
};

}  // namespace corvane
