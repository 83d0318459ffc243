// Preloaded into a program that a test starts, it moves that program's steady time ahead by as many seconds as the file
// named by CORVANE_TEST_STEADY_AHEAD holds, in eight bytes: so a test reaches what comes after hours of work without
// a second program's help in the product. Wall time stays as it is, and so do waits inside the kernel: the program
// has to be woken by something else before it notices.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

const volatile std::int64_t* secondsAhead() {
  const char* file = std::getenv("CORVANE_TEST_STEADY_AHEAD");
  const int descriptor = file == nullptr ? -1 : ::open(file, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  void* memory = ::mmap(nullptr, sizeof(std::int64_t), PROT_READ, MAP_SHARED, descriptor, 0);
  ::close(descriptor);
  return memory == MAP_FAILED ? nullptr : static_cast<const volatile std::int64_t*>(memory);
}

}  // namespace

extern "C" [[gnu::visibility("default")]] int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static const auto real = reinterpret_cast<int (*)(clockid_t, timespec*)>(::dlsym(RTLD_NEXT, "clock_gettime"));
  static const auto* const ahead = secondsAhead();
  const int status = real(clock, time);
  const bool isSteady = clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE || clock == CLOCK_MONOTONIC_RAW;
  if (status == 0 && isSteady && ahead != nullptr) time->tv_sec += *ahead;
  return status;
}
