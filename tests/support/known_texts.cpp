// Linked into every test program: each text that the tests make somebody localise must stand in the catalogue, so that
// no language misses one that the gathering did not see.
#include <gtest/gtest.h>

#include <fstream>
#include <mutex>
#include <set>
#include <string>

#include "base/localized.h"

namespace {

std::string unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\' || at + 1 == text.size()) {
      plain += text[at];
      continue;
    }
    const char sign = text[++at];
    plain += sign == 'n' ? '\n' : sign == 't' ? '\t' : sign;
  }
  return plain;
}

class KnownTexts final : public ::testing::Environment {
  void SetUp() override {
    std::ifstream lines(CORVANE_TEXTS);
    std::string entry;
    bool inKey = false;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("msgid \"")) entry.clear();
      if (line.starts_with("msgid \"") || (inKey && line.starts_with('"'))) {
        const auto quote = line.find('"');
        entry += unescaped(std::string_view(line).substr(quote + 1, line.size() - quote - 2));
        inKey = true;
      } else {
        if (inKey) known_.insert(entry);
        inKey = false;
      }
    }
    ASSERT_GT(known_.size(), 100U) << CORVANE_TEXTS;
    corvane::installTextCatalogue([this](std::string_view literal) {
      if (!known_.contains(literal)) {
        const std::lock_guard lock(mutex_);
        missing_.emplace(literal);
      }
      return std::string();
    });
  }

  void TearDown() override {
    corvane::installTextCatalogue(nullptr);
    for (const auto& text : missing_) ADD_FAILURE() << "not in the catalogue, see tools/texts: " << text;
  }

  std::set<std::string, std::less<>> known_;
  std::mutex mutex_;
  std::set<std::string> missing_;
};

const auto* const registered = ::testing::AddGlobalTestEnvironment(new KnownTexts);

}  // namespace
