#include "platform/posix/system_entropy.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace corvane {

namespace {

void fill(void* bytes, std::size_t count) {
  auto* next = static_cast<unsigned char*>(bytes);
  while (count > 0) {
    const auto got = getrandom(next, count, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      // A kernel without chance leaves nothing sensible to do: identifiers would repeat in silence.
      std::perror("getrandom");
      std::abort();
    }
    next += got;
    count -= static_cast<std::size_t>(got);
  }
}

}  // namespace

Uuid SystemEntropy::uuid() {
  Uuid uuid;
  fill(uuid.bytes.data(), uuid.bytes.size());
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0FU) | 0x40U);  // version 4
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3FU) | 0x80U);  // the variant of RFC 4122
  return uuid;
}

std::uint64_t SystemEntropy::below(std::uint64_t bound) {
  if (bound == 0) return 0;
  // Values under this remainder would make the small answers likelier.
  const auto skip = (0 - bound) % bound;
  for (;;) {
    std::uint64_t value = 0;
    fill(&value, sizeof value);
    if (value >= skip) return value % bound;
  }
}

}  // namespace corvane
