// Folders and files the fast way: names in one go, a file without asking for its size. For scans that touch
// thousands of files; single state files are read with base's readFile().
#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane {

// Who keeps a name below its folder. Kernels before 5.6, and some sandboxes, cannot: then the place that the name led
// to is compared, which takes more calls. Only tests ask for that.
enum class BeneathBy { kernel, comparing };

// An open file or folder; closes itself. Not copied.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();

  // Failures are errno's values.
  [[nodiscard]] static std::expected<Descriptor, int> openFolder(const std::filesystem::path& folder);
  [[nodiscard]] static std::expected<Descriptor, int> openFolderAt(int folder, const char* name);
  // A regular file for reading: EISDIR for a folder, ENOTSUP for what is neither.
  [[nodiscard]] static std::expected<Descriptor, int> openFileAt(int folder, const char* name);
  // The same in a folder whose owner is trusted less than we are: a relative link may lead to another place below
  // `folder`, but nothing leads out of it (EXDEV), and no device is ever opened.
  [[nodiscard]] static std::expected<Descriptor, int> openFileBeneath(int folder, const char* name,
                                                                      BeneathBy means = BeneathBy::kernel);

  [[nodiscard]] int get() const { return value_; }

 private:
  int value_ = -1;
};

enum class EntryKind { file, folder, link, other };

struct FolderEntry {
  std::string name;
  EntryKind kind = EntryKind::other;
};

// All entries but "." and "..", in no order. Fails with errno.
[[nodiscard]] std::expected<std::vector<FolderEntry>, int> folderEntries(int folder);

// Whether anything is there, by the rule of openFileBeneath; opens nothing.
[[nodiscard]] bool existsBeneath(int folder, const char* name, BeneathBy means = BeneathBy::kernel);

// The whole file, in `buffer`, which keeps its memory from call to call; the view holds until the next one.
// Fails with errno, and with EFBIG above `limit` bytes.
[[nodiscard]] std::expected<std::string_view, int> readFileAt(int folder, const char* name, std::size_t limit,
                                                              std::string& buffer);
// The same by the rule of openFileBeneath.
[[nodiscard]] std::expected<std::string_view, int> readFileBeneath(int folder, const char* name, std::size_t limit,
                                                                   std::string& buffer);

}  // namespace corvane
