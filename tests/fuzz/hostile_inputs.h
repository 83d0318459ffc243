// Damaged versions of known inputs, the same ones in each run. A corpus is a folder of small files; "good-" in
// front of a name says that the parser must take the file, "bad-" that it must refuse it. What once broke a parser
// is added there.
#pragma once

#include <array>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>

#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {

using Corpus = std::map<std::string, std::string>;  // file name to bytes

inline Corpus corpusOf(std::string_view parser) {
  Corpus corpus;
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(CORVANE_FUZZ_CORPUS) / parser))
    corpus.emplace(entry.path().filename().string(), TemporaryFolder::read(entry.path()));
  EXPECT_FALSE(corpus.empty());
  return corpus;
}

inline Corpus goodOnes(Corpus corpus) {
  std::erase_if(corpus, [](const auto& entry) { return !entry.first.starts_with("good-"); });
  return corpus;
}

// Replays a corpus; `taken` tells whether the parser took the bytes, and checks what must hold then.
template <class Check>
void replay(const Corpus& corpus, const Check& taken) {
  for (const auto& [name, bytes] : corpus) {
    SCOPED_TRACE(name);
    const bool good = name.starts_with("good-");
    EXPECT_TRUE(good || name.starts_with("bad-"));
    EXPECT_EQ(taken(bytes), good);
  }
}

inline std::vector<std::string> wordsIn(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

// Damage that is never read to its end proves nothing: that many of the rounds are taken, be they ever so hostile.
template <class Inputs, class Check>
void bombard(Inputs inputs, int rounds, int taken, const Check& takes) {
  int read = 0;
  for (int i = 0; i < rounds; ++i) read += takes(inputs.next()) ? 1 : 0;
  EXPECT_GT(read, taken) << "some damage goes deep";
}

class HostileInputs {
 public:
  // `words` mean something to the parser: damage made of them reaches deeper than damage made of noise.
  HostileInputs(const Corpus& seeds, std::vector<std::string> words) : words_(std::move(words)) {
    for (const auto& [name, bytes] : seeds) seeds_.push_back(bytes);
  }

  std::string next() {
    auto bytes = pick(seeds_);
    const auto injuries = below(2) == 0 ? 1 : 1 + below(8);
    for (std::size_t i = 0; i < injuries; ++i) injure(bytes);
    return bytes;
  }

  std::size_t below(std::size_t limit) { return limit == 0 ? 0 : static_cast<std::size_t>(random_()) % limit; }

 private:
  static constexpr std::size_t kLongest = 64U << 10U;  // keeps a chain of doublings small

  const std::string& pick(const std::vector<std::string>& from) { return from[below(from.size())]; }

  void injure(std::string& bytes) {
    const auto at = below(bytes.size() + 1);
    const auto length = std::min(below(16), bytes.size() - at);
    switch (below(12)) {
      case 0:
        if (at < bytes.size()) bytes[at] = static_cast<char>(bytes[at] ^ (1U << below(8)));
        break;
      case 1:
        if (at < bytes.size()) bytes[at] = static_cast<char>(below(256));
        break;
      case 2:
        bytes.erase(at, length);
        break;
      case 3:
        bytes.insert(at, pick(words_));
        break;
      case 4:
        bytes.replace(at, length, pick(words_));
        break;
      case 5:
        bytes.resize(at);
        break;
      case 6: {
        const auto& other = pick(seeds_);
        const auto from = below(other.size() + 1);
        bytes.insert(at, other, from, below(256));
        break;
      }
      case 7:
        writeNumber(bytes, at);
        break;
      default:
        replaceToken(bytes, at);
    }
    if (bytes.size() > kLongest) bytes.resize(kLongest);
  }

  // Puts a word, or a token of another seed, in the place of what stands between two signs of a grammar: damage
  // that most parsers read to the end before they see what is wrong.
  void replaceToken(std::string& bytes, std::size_t at) {
    const auto [begin, end] = tokenAround(bytes, at);
    if (below(2) == 0) {
      bytes.replace(begin, end - begin, pick(words_));
    } else {
      const auto& other = pick(seeds_);
      const auto [from, to] = tokenAround(other, below(other.size() + 1));
      bytes.replace(begin, end - begin, other, from, to - from);
    }
  }

  static std::pair<std::size_t, std::size_t> tokenAround(const std::string& bytes, std::size_t at) {
    constexpr std::string_view kSigns = ",:[]{}<>=() \n";
    const auto before = at == 0 ? std::string::npos : bytes.find_last_of(kSigns, at - 1);
    return {before == std::string::npos ? 0 : before + 1, std::min(bytes.find_first_of(kSigns, at), bytes.size())};
  }

  // A length or an offset in either byte order, at the edges where sums overflow.
  void writeNumber(std::string& bytes, std::size_t at) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    constexpr std::array<std::uint64_t, 10> kEdges = {0,          1,          0x7f,      0xff,          0x7fffffff,
                                                      0x80000000, 0xffffffff, kMost / 2, kMost / 2 + 1, kMost};
    const auto value = kEdges[below(kEdges.size())] - below(3);
    const auto width = std::size_t{1} << below(4);
    const bool bigEndian = below(2) == 0;
    for (std::size_t i = 0; i < width && at + i < bytes.size(); ++i)
      bytes[at + i] = static_cast<char>(value >> (8 * (bigEndian ? width - 1 - i : i)));
  }

  std::mt19937_64 random_{20010101};
  std::vector<std::string> seeds_;
  std::vector<std::string> words_;
};

}  // namespace corvane::testing
