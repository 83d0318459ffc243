#include "helper/scratch_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "base/atomic_file.h"

namespace corvane {

Result<ScratchFolder> ScratchFolder::create(std::optional<std::pair<uid_t, gid_t>> account) {
  std::error_code error;
  std::string name = (std::filesystem::temp_directory_path(error) / "corvane-labels-XXXXXX").string();
  if (error || !mkdtemp(name.data())) return std::unexpected(fileError("making", name, errno));
  ScratchFolder folder{std::filesystem::path(name)};
  const auto home = folder.writable();
  if (chmod(name.c_str(), 0755) != 0 || mkdir(home.c_str(), 0700) != 0)
    return std::unexpected(fileError("making", home, errno));
  if (account && lchown(home.c_str(), account->first, account->second) != 0)
    return std::unexpected(fileError("handing over", home, errno));
  return folder;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

}  // namespace corvane
