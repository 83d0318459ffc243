// Whether a folder may be trusted as the user's own.
#pragma once

#include <filesystem>

#include "base/error.h"

namespace corvane {

// Success when `folder` is a folder that belongs to the running user and that neither its group nor others may
// write to; otherwise an error in the domain "CRVFolderOwnership" whose text names the folder and what is wrong.
// A last symbolic link is followed; the folders above it are not looked at.
[[nodiscard]] Status checkOwnFolder(const std::filesystem::path& folder);

}  // namespace corvane
