// Arguments and environment in the form in which the operating system starts a program.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane {

// Owns the words it points to; not copied. May be read between fork and exec.
class ProgramWords {
 public:
  [[nodiscard]] static ProgramWords arguments(std::string_view executable, const std::vector<std::string>& arguments) {
    std::vector<std::string> words{std::string(executable)};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return ProgramWords(std::move(words));
  }
  [[nodiscard]] static ProgramWords environment(const std::vector<std::pair<std::string, std::string>>& variables) {
    std::vector<std::string> words;
    words.reserve(variables.size());
    for (const auto& [name, value] : variables) words.emplace_back(name).append("=").append(value);
    return ProgramWords(std::move(words));
  }

  ProgramWords(const ProgramWords&) = delete;
  ProgramWords& operator=(const ProgramWords&) = delete;

  // Ends with a null pointer.
  [[nodiscard]] char* const* data() const { return pointers_.data(); }
  [[nodiscard]] char** data() { return pointers_.data(); }

 private:
  explicit ProgramWords(std::vector<std::string> words) : words_(std::move(words)) {
    pointers_.reserve(words_.size() + 1);
    for (auto& word : words_) pointers_.push_back(word.data());
    pointers_.push_back(nullptr);
  }

  std::vector<std::string> words_;
  std::vector<char*> pointers_;
};

}  // namespace corvane
