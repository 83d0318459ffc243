// Files in memory that fail to order.
#pragma once

#include <map>
#include <mutex>
#include <set>

#include "platform/clock.h"
#include "platform/files.h"

namespace corvane {

// Any thread. Folders exist once made; "/" always does. Error texts are those of the real files.
class ScriptedFiles : public Files {
 public:
  explicit ScriptedFiles(const Clock& clock) : clock_(clock) {}

  // Every call of the port but exists, modified and size counts, from 1. The k-th call from now fails with
  // `errnoValue` and changes nothing; later calls succeed again.
  void failCall(std::size_t k, int errnoValue);
  [[nodiscard]] std::size_t calls() const;
  // Every counted call that names `path` fails until a `errnoValue` of 0 takes the fault away.
  void failPath(const std::filesystem::path& path, int errnoValue);

  // What another program did: makes the folders above, counts as no call and never fails.
  void put(const std::filesystem::path& path, std::string_view bytes);
  [[nodiscard]] std::optional<std::string> content(const std::filesystem::path& path) const;

  [[nodiscard]] Result<std::string> read(const std::filesystem::path& path) const override;
  [[nodiscard]] Status replace(const std::filesystem::path& path, std::string_view bytes, mode_t mode) override;
  [[nodiscard]] Status append(const std::filesystem::path& path, std::string_view bytes, mode_t mode) override;
  [[nodiscard]] Status makeFolders(const std::filesystem::path& folder) override;
  [[nodiscard]] Status rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  [[nodiscard]] Status remove(const std::filesystem::path& path) override;
  [[nodiscard]] bool exists(const std::filesystem::path& path) const override;
  [[nodiscard]] std::optional<Date> modified(const std::filesystem::path& path) const override;
  [[nodiscard]] std::optional<std::uint64_t> size(const std::filesystem::path& path) const override;

 private:
  struct Entry {
    std::string bytes;
    Date modified;
  };
  // Paths come as they were made, so their text tells them apart, sooner than their parts would.
  struct ByText {
    bool operator()(const std::filesystem::path& a, const std::filesystem::path& b) const {
      return a.native() < b.native();
    }
  };
  // All below with the mutex held.
  [[nodiscard]] Status count(std::string_view doing, const std::filesystem::path& path) const;
  [[nodiscard]] Status mayHold(std::string_view doing, const std::filesystem::path& path) const;
  void makeAll(const std::filesystem::path& folder);

  const Clock& clock_;
  mutable std::mutex mutex_;
  std::map<std::filesystem::path, Entry, ByText> files_;
  std::set<std::filesystem::path, ByText> folders_{"/"};
  std::map<std::filesystem::path, int, ByText> brokenPaths_;
  mutable std::size_t calls_ = 0;
  mutable std::map<std::size_t, int> brokenCalls_;
};

}  // namespace corvane
