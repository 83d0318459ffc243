#include "core/discovery/shell_words.h"

#include <algorithm>

namespace corvane {
namespace {

// A label nests three or four levels; deeper is an attack on the stack.
constexpr int kDepthLimit = 64;
// Labels set some ten variables; the search among them is linear.
constexpr std::size_t kVariableLimit = 1000;
// Longer values are no names, paths or identifiers; it also stops texts that double themselves.
constexpr std::size_t kLiteralLimit = 4096;

constexpr std::string_view kKeywords[] = {"if",    "then",    "else",    "elif",     "do",      "while",
                                          "until", "!",       "{",       "}",        "time",    "export",
                                          "local", "typeset", "declare", "readonly", "integer", "-g"};

bool isNameStart(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '_';
}
bool isNameLetter(char letter) { return isNameStart(letter) || (letter >= '0' && letter <= '9'); }
bool endsWord(char letter) { return std::string_view(" \t\r\n;&|()<>").find(letter) != std::string_view::npos; }

}  // namespace

void ShellWords::fail(std::string_view why) {
  if (problem_.empty()) problem_ = why;
}

bool ShellWords::declaresFunction(std::string_view name) const {
  return std::ranges::find(functions_, name) != functions_.end();
}

void ShellWords::skipBlanks() {
  while (!atEnd()) {
    const char letter = peek();
    if (letter == ' ' || letter == '\t' || letter == '\r')
      ++at_;
    else if (letter == '\\' && peek(1) == '\n')
      at_ += 2;
    else
      return;
  }
}

void ShellWords::skipComment() {
  const auto end = text_.find('\n', at_);
  at_ = end == std::string_view::npos ? text_.size() : end;
}

const ShellAssignment* ShellWords::next() {
  while (true) {
    skipBlanks();
    if (atEnd()) return nullptr;
    const char letter = peek();
    if (letter == '#') {
      skipComment();
    } else if (endsWord(letter)) {
      skipSeparator();
    } else if (commandPosition_ && isNameStart(letter)) {
      const auto start = at_;
      const auto name = identifier();
      if (peek() == '=') {
        ++at_;
        current_.name = name;
        current_.literal = readValue(current_);
        remember(current_);
        if (!problem_.empty()) return nullptr;
        return &current_;
      }
      at_ = start;
      readCommandWord();
    } else {
      readCommandWord();
    }
  }
}

void ShellWords::skipSeparator() {
  const char letter = text_[at_++];
  if (letter == '<' || letter == '>') {
    if (letter == '<' && peek() == '<' && peek(1) == '<') {
      at_ += 2;
    } else if (letter == '<' && peek() == '<') {
      ++at_;
      if (peek() == '-') ++at_;
      skipBlanks();
      const auto start = at_;
      readWord(nullptr);
      auto delimiter = text_.substr(start, at_ - start);
      while (!delimiter.empty() && (delimiter.front() == '\'' || delimiter.front() == '"' || delimiter.front() == '\\'))
        delimiter.remove_prefix(1);
      while (!delimiter.empty() && (delimiter.back() == '\'' || delimiter.back() == '"')) delimiter.remove_suffix(1);
      hereDelimiters_.push_back(delimiter);
    } else if (peek() == '(') {
      ++at_;
      skipUntilClosed('(', ')', false);
    }
    return;
  }
  if (letter == '(' && commandPosition_ && peek() == '(') {
    skipUntilClosed('(', ')', false);
    return;
  }
  commandPosition_ = letter != ' ';
  if (letter == '\n' && !hereDelimiters_.empty()) skipHereDocument();
}

void ShellWords::skipHereDocument() {
  for (const auto delimiter : std::exchange(hereDelimiters_, {})) {
    while (true) {
      if (at_ >= text_.size()) return fail("a here-document is never closed");
      const auto end = std::min(text_.find('\n', at_), text_.size());
      auto line = text_.substr(at_, end - at_);
      at_ = std::min(end + 1, text_.size());
      while (line.starts_with('\t')) line.remove_prefix(1);
      if (line == delimiter) break;
    }
  }
}

std::string_view ShellWords::identifier() {
  const auto start = at_;
  while (at_ < text_.size() && isNameLetter(text_[at_])) ++at_;
  return text_.substr(start, at_ - start);
}

// A word that is no assignment: a command, an argument, a keyword, the start of a function or of a test.
void ShellWords::readCommandWord() {
  const auto start = at_;
  readWord(nullptr);
  if (at_ == start) {  // cannot happen for a word's first letter; never stand still
    ++at_;
    return;
  }
  const auto word = text_.substr(start, at_ - start);
  if (commandPosition_ && word == "[[") return skipTest();
  if (commandPosition_ && peek() == '(' && peek(1) == ')') {
    at_ += 2;
    return skipFunction(word);
  }
  if (commandPosition_ && word == "function") {
    skipBlanks();
    const auto name = identifier();
    skipBlanks();
    if (peek() == '(' && peek(1) == ')') at_ += 2;
    return skipFunction(name);
  }
  commandPosition_ = commandPosition_ && std::ranges::find(kKeywords, word) != std::end(kKeywords);
}

void ShellWords::skipTest() {
  commandPosition_ = false;
  while (!atEnd()) {
    skipBlanks();
    if (text_.substr(at_).starts_with("]]")) {
      at_ += 2;
      return;
    }
    if (!atEnd() && endsWord(peek()))
      ++at_;
    else
      readWord(nullptr);
  }
  fail("a test is never closed");
}

void ShellWords::skipFunction(std::string_view name) {
  functions_.push_back(name);
  commandPosition_ = true;
  while (!atEnd() && (skipBlanks(), peek() == '\n')) ++at_;
  if (peek() != '{') return;
  ++at_;
  skipUntilClosed('{', '}', false);
}

// From behind an opening bracket to behind its closing one. `quoted`: the bracket stands inside double quotes,
// where apostrophes are ordinary letters.
void ShellWords::skipUntilClosed(char open, char close, bool quoted) {
  if (++depth_ > kDepthLimit) return fail("it nests too deeply");
  int level = 1;
  char before = open;
  while (!atEnd()) {
    const char letter = text_[at_++];
    if (letter == '\\') {
      ++at_;
    } else if (letter == '\'' && !quoted) {
      skipSingleQuotes();
    } else if (letter == '"') {
      readDoubleQuotes(nullptr);
    } else if (letter == '`') {
      skipBackquotes();
    } else if (letter == '$' && (peek() == '(' || peek() == '{')) {
      --at_;
      readExpansion(nullptr, quoted && peek(1) == '{');
    } else if (letter == '#' && !quoted && (before == ' ' || before == '\t' || before == '\n')) {
      skipComment();
    } else if (letter == open) {
      ++level;
    } else if (letter == close && --level == 0) {
      --depth_;
      return;
    }
    before = letter;
  }
  fail(open == '{' ? "a brace is never closed" : "a bracket is never closed");
}

void ShellWords::skipSingleQuotes() {
  const auto end = text_.find('\'', at_);
  if (end == std::string_view::npos) return fail("a quote is never closed");
  at_ = end + 1;
}

void ShellWords::skipBackquotes() {
  while (at_ < text_.size() && text_[at_] != '`') at_ += text_[at_] == '\\' ? 2 : 1;
  if (at_ >= text_.size()) return fail("a back-quote is never closed");
  ++at_;
}

bool ShellWords::readValue(ShellAssignment& into) {
  into.words.clear();
  into.isArray = peek() == '(';
  if (into.isArray) {
    ++at_;
    return readArray(into);
  }
  into.words.emplace_back();
  if (peek() == '~') {  // the home folder of whoever runs it
    readWord(nullptr);
    return false;
  }
  return readWord(&into.words.front());
}

bool ShellWords::readArray(ShellAssignment& into) {
  bool literal = true;
  while (!atEnd()) {
    skipBlanks();
    const char letter = peek();
    if (letter == ')') {
      ++at_;
      return literal;
    }
    if (letter == '#') {
      skipComment();
    } else if (endsWord(letter)) {
      if (letter != '\n') literal = false;
      ++at_;
    } else if (!atEnd()) {
      if (into.words.size() >= kVariableLimit) {
        fail("a list is too long");
        return false;
      }
      literal = readWord(&into.words.emplace_back()) && literal;
    }
  }
  fail("a list is never closed");
  return false;
}

bool ShellWords::append(std::string* into, std::string_view text) {
  if (into == nullptr) return true;
  if (into->size() + text.size() > kLiteralLimit) return false;
  into->append(text);
  return true;
}

// Up to the end of the word; true while all of it is literal. Without `into` it only skips.
bool ShellWords::readWord(std::string* into) {
  bool literal = true;
  while (!atEnd() && !endsWord(peek())) {
    const char letter = peek();
    const auto start = at_;
    if (letter == '\'') {
      ++at_;
      skipSingleQuotes();
      if (problem_.empty()) literal = append(into, text_.substr(start + 1, at_ - start - 2)) && literal;
    } else if (letter == '"') {
      ++at_;
      literal = readDoubleQuotes(into) && literal;
    } else if (letter == '\\') {
      if (peek(1) != '\n') literal = append(into, text_.substr(at_ + 1, 1)) && literal;
      at_ = std::min(at_ + 2, text_.size());
    } else if (letter == '`') {
      ++at_;
      skipBackquotes();
      literal = false;
    } else if (letter == '$') {
      literal = readExpansion(into, false) && literal;
    } else {
      while (!atEnd() && !endsWord(peek()) && std::string_view("'\"\\`$").find(peek()) == std::string_view::npos) ++at_;
      literal = append(into, text_.substr(start, at_ - start)) && literal;
    }
  }
  return literal;
}

// From behind the opening quote.
bool ShellWords::readDoubleQuotes(std::string* into) {
  if (++depth_ > kDepthLimit) {
    fail("it nests too deeply");
    return false;
  }
  bool literal = true;
  while (!atEnd()) {
    const auto start = at_;
    at_ = std::min(text_.find_first_of("\"\\`$", at_), text_.size());
    literal = append(into, text_.substr(start, at_ - start)) && literal;
    if (atEnd()) break;
    const char letter = peek();
    if (letter == '$') {
      literal = readExpansion(into, true) && literal;
      continue;
    }
    ++at_;
    if (letter == '"') {
      --depth_;
      return literal;
    }
    if (letter == '`') {
      skipBackquotes();
      literal = false;
    } else if (!atEnd()) {  // a backslash: special before four letters and at a line's end, else itself
      const char next = text_[at_++];
      const bool special = std::string_view("\"\\`$\n").find(next) != std::string_view::npos;
      if (next != '\n') literal = append(into, text_.substr(special ? at_ - 1 : at_ - 2, special ? 1 : 2)) && literal;
    }
  }
  fail("a quote is never closed");
  return false;
}

// At a "$".
bool ShellWords::readExpansion(std::string* into, bool quoted) {
  const char next = peek(1);
  if (next == '(') {
    at_ += 2;
    skipUntilClosed('(', ')', false);
    return false;
  }
  if (next == '\'' && !quoted) {
    at_ += 2;
    while (at_ < text_.size() && text_[at_] != '\'') at_ += text_[at_] == '\\' ? 2 : 1;
    if (at_ >= text_.size()) fail("a quote is never closed");
    ++at_;
    return false;
  }
  if (next == '{') {
    const auto start = at_;
    at_ += 2;
    if (isNameStart(peek())) {
      const auto nameStart = at_;
      (void)identifier();
      if (peek() == '}') {
        const auto end = at_ + 1;
        at_ = nameStart;
        const bool known = readVariable(into);
        at_ = end;
        return known;
      }
    }
    at_ = start + 2;
    skipUntilClosed('{', '}', quoted);
    return false;
  }
  ++at_;
  if (isNameStart(next)) return readVariable(into);
  if (next != '\0' && std::string_view("0123456789*@#?$!-").find(next) != std::string_view::npos) {
    ++at_;
    return false;
  }
  return append(into, "$");
}

bool ShellWords::readVariable(std::string* into) {
  const auto name = identifier();
  const auto found = std::ranges::find(known_, name, [](const auto& entry) { return entry.first; });
  if (found == known_.end() || !found->second) return false;
  return append(into, *found->second);
}

void ShellWords::remember(const ShellAssignment& assignment) {
  const auto found = std::ranges::find(known_, assignment.name, [](const auto& entry) { return entry.first; });
  const bool known = assignment.literal && !assignment.isArray;
  if (found != known_.end()) {
    if (!known) found->second.reset();
    return;
  }
  if (known_.size() >= kVariableLimit) return fail("it sets too many variables");
  known_.emplace_back(assignment.name, known ? std::optional(assignment.words.front()) : std::nullopt);
}

}  // namespace corvane
