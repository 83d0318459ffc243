// What a helper with root's rights may rely on: files and folders that nobody else can exchange. Changes nothing but
// the folders that it makes.
#pragma once

#include <sys/types.h>

#include <filesystem>

#include "base/error.h"
#include "core/places.h"

namespace corvane {

// Whose leave to write spoils a file or folder for a helper of `ownUid`: the mode bits.
[[nodiscard]] mode_t untrustedWriters(uid_t ownUid);

// Success when `path`, which is named below `root`, and each link on the way to it, with all the folders up to `root`
// that they lie in (up to the file system's own where a link leads out of `root`), belong to root or to `ownUid` and
// can be written to by nobody else; where we are not root, a group of ours may. Fails in the domain "CRVRootTrust" with
// a text that names what is wrong.
[[nodiscard]] Status checkTrustedPath(const std::filesystem::path& path, const std::filesystem::path& root,
                                      uid_t ownUid);

// Makes the folders of state, log, socket and deferral events where they are missing, and for root checks that they and
// the folders above them are root's alone. That of the deferral events takes a file of each user, so all may write
// there, and it is sticky.
[[nodiscard]] Status prepareFolders(const CorvaneConstants& places);

}  // namespace corvane
