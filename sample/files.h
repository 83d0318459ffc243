// Writing the sample's files. A failure ends the generator with a line, for a half-made sample is of no use.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace corvane::sample {

// Thrown and caught inside the generator only.
class MakingFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Makes the folders above the file; not synced, since a sample can be made again. Mode as given, whatever
// the umask. Throws MakingFailed.
void put(const std::filesystem::path& path, std::string_view bytes, mode_t mode = 0644);
void makeFolder(const std::filesystem::path& folder, mode_t mode = 0755);

[[nodiscard]] std::string take(const std::filesystem::path& path);

// `text` with every `from` replaced.
[[nodiscard]] std::string replaced(std::string text, std::string_view from, std::string_view to);

}  // namespace corvane::sample
