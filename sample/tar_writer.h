// Archives for the vendors' downloads: POSIX ustar, byte for byte the same for the same content.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace corvane::sample {

class TarWriter {
 public:
  // `path` is relative; at most 100 bytes for the last components and 155 for the folders before them.
  void file(std::string_view path, std::string_view bytes, mode_t mode);

  // The whole archive; the writer is empty afterwards.
  [[nodiscard]] std::string finish();

 private:
  std::string archive_;
};

}  // namespace corvane::sample
