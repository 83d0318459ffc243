#include "base/frame.h"

#include <cassert>
#include <limits>
#include <string>

namespace corvane {

namespace {

std::size_t lengthAt(std::string_view bytes) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < kFrameHeaderBytes; ++i) length = length << 8U | static_cast<unsigned char>(bytes[i]);
  return length;
}

}  // namespace

std::string encodeFrame(std::string_view body) {
  assert(body.size() <= std::numeric_limits<std::uint32_t>::max() && "senders check their limit");
  std::string frame;
  frame.reserve(kFrameHeaderBytes + body.size());
  for (int shift = 24; shift >= 0; shift -= 8) frame.push_back(static_cast<char>(body.size() >> shift & 0xFFU));
  frame.append(body);
  return frame;
}

Status FrameDecoder::feed(std::string_view bytes) {
  buffer_.append(bytes);
  return checkHeaders();
}

Status FrameDecoder::checkHeaders() {
  while (buffer_.size() >= checked_ + kFrameHeaderBytes) {
    const auto length = lengthAt(std::string_view(buffer_).substr(checked_));
    if (length > limit_) {
      buffer_.clear();
      return failure(errorDomain, tooLong,
                     "a frame of " + std::to_string(length) + " bytes is over the limit of " + std::to_string(limit_));
    }
    checked_ += kFrameHeaderBytes + length;
  }
  return {};
}

std::optional<std::string> FrameDecoder::next() {
  if (buffer_.size() < kFrameHeaderBytes) return std::nullopt;
  const auto end = kFrameHeaderBytes + lengthAt(buffer_);
  if (buffer_.size() < end) return std::nullopt;
  auto body = buffer_.substr(kFrameHeaderBytes, end - kFrameHeaderBytes);
  buffer_.erase(0, end);
  checked_ -= end;
  return body;
}

}  // namespace corvane
