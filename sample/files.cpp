#include "sample/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/atomic_file.h"

namespace corvane::sample {

namespace {

[[noreturn]] void fail(std::string_view doing, const std::filesystem::path& path) {
  throw MakingFailed(fileError(doing, path, errno).text);
}

void writeAll(int file, std::string_view bytes, const std::filesystem::path& path) {
  while (!bytes.empty()) {
    const auto written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      ::close(file);
      fail("Writing", path);
    }
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

int create(const std::filesystem::path& path, mode_t mode) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
}

}  // namespace

void put(const std::filesystem::path& path, std::string_view bytes, mode_t mode) {
  auto file = create(path, mode);
  if (file < 0 && errno == ENOENT) {
    makeFolder(path.parent_path());
    file = create(path, mode);
  }
  if (file < 0) fail("Creating", path);
  writeAll(file, bytes, path);
  if (::fchmod(file, mode) != 0) fail("Setting the mode of", path);
  if (::close(file) != 0) fail("Writing", path);
}

void makeFolder(const std::filesystem::path& folder, mode_t mode) {
  if (::mkdir(folder.c_str(), mode) == 0) return;
  if (errno == ENOENT && folder.has_relative_path()) {
    makeFolder(folder.parent_path());
    if (::mkdir(folder.c_str(), mode) == 0) return;
  }
  if (errno != EEXIST) fail("Creating", folder);
}

std::string take(const std::filesystem::path& path) {
  auto bytes = readFile(path);
  if (!bytes) throw MakingFailed(bytes.error().text);
  return *std::move(bytes);
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

}  // namespace corvane::sample
