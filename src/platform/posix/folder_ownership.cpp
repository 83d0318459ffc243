#include "platform/posix/folder_ownership.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace corvane {

Status checkOwnFolder(const std::filesystem::path& folder) {
  const auto refuse = [&](int code, std::string_view why) -> Status {
    return failure("CRVFolderOwnership", code, folder.string() + " " + std::string(why));
  };
  struct stat found {};
  if (::stat(folder.c_str(), &found) != 0)
    return refuse(errno, std::string("cannot be looked at: ") + std::strerror(errno));
  if (!S_ISDIR(found.st_mode)) return refuse(ENOTDIR, "is not a folder");
  if (found.st_uid != ::geteuid()) return refuse(EPERM, "does not belong to the user who runs this program");
  if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0)
    return refuse(EPERM, "may be written to by others; take that right away");
  return {};
}

}  // namespace corvane
