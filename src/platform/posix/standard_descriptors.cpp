#include "platform/posix/standard_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace corvane {

void fillStandardDescriptors() {
  for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
    if (::fcntl(number, F_GETFD) >= 0) continue;
    // The lowest free number is given, and all below this one are taken.
    (void)::open("/dev/null", O_RDWR);  // NOLINT(cppcoreguidelines-pro-type-vararg)
  }
}

}  // namespace corvane
