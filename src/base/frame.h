// Frames on a byte stream: 4 bytes of length, big-endian, then the body. Bodies are not understood here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"

namespace corvane {

constexpr std::size_t kFrameHeaderBytes = 4;
constexpr std::size_t kRequestFrameLimit = 1U << 20U;  // a request names labels; a whole catalogue stays far below
constexpr std::size_t kAnswerFrameLimit = 64U << 20U;  // an answer may hold every application of the machine

// Header and body as they travel. The body must be shorter than 4 GiB; senders check it against their limit.
[[nodiscard]] std::string encodeFrame(std::string_view body);

// Takes a stream apart as its bytes come. A value of one connection; one thread at a time.
class FrameDecoder {
 public:
  // The error when a header announces more than the limit. The decoder is of no use after that.
  static constexpr const char* errorDomain = "CRVFrame";
  static constexpr int tooLong = 1;

  explicit FrameDecoder(std::size_t bodyLimit) : limit_(bodyLimit) {}

  // Takes over `bytes`. Fails as soon as a header announces a body above the limit, and keeps nothing then.
  // Memory follows what has come, never what was announced.
  [[nodiscard]] Status feed(std::string_view bytes);

  // The next whole body, in order; absent when more bytes are needed.
  [[nodiscard]] std::optional<std::string> next();

  // True when the stream must not end here.
  [[nodiscard]] bool insideFrame() const { return !buffer_.empty(); }

 private:
  [[nodiscard]] Status checkHeaders();

  std::size_t limit_;
  std::size_t checked_ = 0;  // where the first header stands that was not looked at
  std::string buffer_;
};

}  // namespace corvane
