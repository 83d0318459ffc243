// The assignments of a shell text, without a shell: follows quotes, comments, substitutions and functions only as
// far as it takes to tell a literal from something computed. Executes nothing.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane {

struct ShellAssignment {
  std::string_view name;
  bool literal = false;  // all its words are known without running anything
  bool isArray = false;
  std::vector<std::string> words;  // one for a scalar; meaningless unless `literal`
};

// One pass over a text that must outlive it. Any thread.
class ShellWords {
 public:
  explicit ShellWords(std::string_view text) : text_(text) {}

  // The next assignment outside functions, branches included; null at the end or at a problem. Valid until the
  // next call. $x and ${x} are filled in where the text itself has set x to literals only.
  [[nodiscard]] const ShellAssignment* next();

  // Why reading ended early ("a quote is never closed"); empty when it did not.
  [[nodiscard]] std::string_view problem() const { return problem_; }

  [[nodiscard]] bool declaresFunction(std::string_view name) const;

 private:
  [[nodiscard]] bool atEnd() const { return at_ >= text_.size() || !problem_.empty(); }
  [[nodiscard]] char peek(std::size_t ahead = 0) const {
    return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
  }
  void fail(std::string_view why);
  void skipBlanks();
  void skipComment();
  void skipSeparator();
  void skipHereDocument();
  void skipTest();
  void skipUntilClosed(char open, char close, bool quoted);
  void skipSingleQuotes();
  void skipBackquotes();
  void skipFunction(std::string_view name);
  std::string_view identifier();
  bool readValue(ShellAssignment& into);
  bool readArray(ShellAssignment& into);
  bool readWord(std::string* into);
  bool readDoubleQuotes(std::string* into);
  bool readExpansion(std::string* into, bool quoted);
  bool readVariable(std::string* into);
  void readCommandWord();
  void remember(const ShellAssignment& assignment);
  bool append(std::string* into, std::string_view text);

  std::string_view text_;
  std::size_t at_ = 0;
  int depth_ = 0;
  bool commandPosition_ = true;
  std::string_view problem_;
  ShellAssignment current_;
  std::vector<std::pair<std::string_view, std::optional<std::string>>> known_;  // nothing: computed somewhere
  std::vector<std::string_view> functions_;
  std::vector<std::string_view> hereDelimiters_;
};

}  // namespace corvane
