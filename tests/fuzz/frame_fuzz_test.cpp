#include "base/frame.h"

#include <span>

#include "fuzz/hostile_inputs.h"

namespace corvane::testing {

namespace {

constexpr std::size_t kLimit = 4096;

struct Outcome {
  std::vector<std::string> bodies;
  bool refused = false;
  bool insideFrame = false;
  friend bool operator==(const Outcome&, const Outcome&) = default;
};

// The stream in pieces; `piece` gives the length of the next one.
template <class Piece>
Outcome outcomeOf(std::string_view stream, const Piece& piece) {
  FrameDecoder decoder(kLimit);
  Outcome outcome;
  while (!stream.empty() && !outcome.refused) {
    const auto length = std::min(piece(), stream.size());
    outcome.refused = !decoder.feed(stream.substr(0, length));
    stream.remove_prefix(length);
    while (auto body = decoder.next()) outcome.bodies.push_back(std::move(*body));
  }
  outcome.insideFrame = decoder.insideFrame();
  return outcome;
}

Outcome expectedOf(std::string_view stream) {
  Outcome outcome;
  while (stream.size() >= kFrameHeaderBytes) {
    std::size_t length = 0;
    for (const char byte : stream.substr(0, kFrameHeaderBytes))
      length = length * 256 + static_cast<unsigned char>(byte);
    outcome.refused = length > kLimit;
    if (outcome.refused) return outcome;
    if (stream.size() - kFrameHeaderBytes < length) break;
    outcome.bodies.emplace_back(stream.substr(kFrameHeaderBytes, length));
    stream.remove_prefix(kFrameHeaderBytes + length);
  }
  outcome.insideFrame = !stream.empty();
  return outcome;
}

}  // namespace

TEST(FrameFuzz, theCorpusIsJudgedRightly) {
  replay(corpusOf("frame"), [](const std::string& bytes) {
    const auto outcome = outcomeOf(bytes, [] { return std::size_t{1}; });
    EXPECT_EQ(outcome, expectedOf(bytes));
    return !outcome.refused && !outcome.insideFrame;
  });
}

TEST(FrameFuzz, howAStreamIsCutChangesNothing) {
  HostileInputs inputs(corpusOf("frame"), {std::string("\0\0\0\0", 4), std::string("\0\0\0\1x", 5),
                                           std::string("\0\0\x10\0", 4), std::string("\0\0\x10\1", 4), "\xff"});
  std::size_t refused = 0;
  std::size_t bodies = 0;
  for (int i = 0; i < 5000; ++i) {
    const auto stream = inputs.next();
    const auto expected = expectedOf(stream);
    refused += expected.refused ? 1 : 0;
    bodies += expected.bodies.size();
    const auto cut = outcomeOf(stream, [&] { return 1 + inputs.below(64); });
    // A refusal keeps nothing, so what came in the same piece before it may be lost with it.
    EXPECT_EQ(cut.refused, expected.refused);
    ASSERT_LE(cut.bodies.size(), expected.bodies.size());
    EXPECT_TRUE(std::ranges::equal(cut.bodies, std::span(expected.bodies).first(cut.bodies.size())));
    if (!expected.refused) {
      EXPECT_EQ(cut, expected);
    }
  }
  EXPECT_GT(refused, 100U);
  EXPECT_GT(bodies, 100U);
}

}  // namespace corvane::testing
