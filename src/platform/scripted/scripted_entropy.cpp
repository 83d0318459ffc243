#include "platform/scripted/scripted_entropy.h"

namespace corvane {

// SplitMix64: every seed gives a good row, and it is the same everywhere.
std::uint64_t ScriptedEntropy::next() {
  const std::lock_guard lock(mutex_);
  state_ += 0x9E3779B97F4A7C15U;
  auto value = state_;
  value = (value ^ value >> 30U) * 0xBF58476D1CE4E5B9U;
  value = (value ^ value >> 27U) * 0x94D049BB133111EBU;
  return value ^ value >> 31U;
}

Uuid ScriptedEntropy::uuid() {
  Uuid uuid;
  for (std::size_t half = 0; half < 2; ++half) {
    auto value = next();
    for (std::size_t i = 0; i < 8; ++i, value >>= 8U) uuid.bytes[half * 8 + i] = static_cast<std::uint8_t>(value);
  }
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0FU) | 0x40U);
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3FU) | 0x80U);
  return uuid;
}

std::uint64_t ScriptedEntropy::below(std::uint64_t bound) { return bound == 0 ? 0 : next() % bound; }

}  // namespace corvane
