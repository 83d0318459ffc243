// A text looked for in many others, without regard to case. All signs stand for themselves.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// A value; any thread.
class LogSearch {
 public:
  LogSearch() = default;
  // Lower-cases what is wanted and takes white space off its ends. One that wants nothing is in every text.
  explicit LogSearch(std::string_view wanted);

  [[nodiscard]] bool isEmpty() const { return wanted_.empty(); }
  // Every text that this is in has `wider` in it as well.
  [[nodiscard]] bool narrows(const LogSearch& wider) const { return wanted_.find(wider.wanted_) != std::string::npos; }
  [[nodiscard]] bool isIn(std::string_view text) const;

  friend bool operator==(const LogSearch& a, const LogSearch& b) { return a.wanted_ == b.wanted_; }

 private:
  static constexpr std::size_t kLanes = 16;  // places that are looked at at once
  // What a byte is like where a find may begin: ((byte | set) & kept) == value, for each of the places.
  struct Anchor {
    using Bytes = std::uint8_t __attribute__((vector_size(kLanes)));
    Anchor() = default;
    Anchor(std::uint8_t set, std::uint8_t kept, std::uint8_t value)
        : set(Bytes{} + set), kept(Bytes{} + kept), value(Bytes{} + value) {}
    [[nodiscard]] Bytes like(const char* from) const;

    Bytes set{};
    Bytes kept{};
    Bytes value{};
  };
  [[nodiscard]] static Anchor anchorOf(char lowerCased);
  [[nodiscard]] Anchor firstOfOtherScript() const;
  [[nodiscard]] bool standsAmong(const char* from, const char* end) const;
  [[nodiscard]] bool standsAt(const char* at, const char* end) const;
  [[nodiscard]] bool standsInOtherScriptAt(const char* at, const char* end) const;

  std::string wanted_;
  std::string folds_;  // the bits that make a letter's case the same, for each of its bytes
  bool isAscii_ = true;
  Anchor first_;
  Anchor last_;
  std::size_t lastAt_ = 0;
};

}  // namespace corvane
