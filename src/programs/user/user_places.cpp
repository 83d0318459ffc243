#include "programs/user/user_places.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/posix/folder_ownership.h"

namespace corvane {
namespace {

std::string environmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// A field of the account that this runs as; null where the system knows none.
const char* ofOwnAccount(char* passwd::*field) {
  const passwd* account = getpwuid(getuid());
  return account == nullptr ? nullptr : account->*field;
}

std::filesystem::path homeFolder() {
  if (auto home = environmentValue("HOME"); !home.empty()) return home;
  const char* home = ofOwnAccount(&passwd::pw_dir);
  return home == nullptr ? "/" : home;
}

}  // namespace

std::string userShortName() {
  const char* name = ofOwnAccount(&passwd::pw_name);
  return name == nullptr ? std::to_string(getuid()) : name;
}

std::filesystem::path sessionMemoryFolder(std::string_view name) {
  const auto runtime = environmentValue("XDG_RUNTIME_DIR");
  const auto folder =
      (runtime.empty() ? CorvaneConstants{.home = homeFolder()}.userSupportFolder() : std::filesystem::path(runtime)) /
      name;
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  return folder;
}

Result<CorvaneConstants> placesFromEnvironment() {
  CorvaneConstants places{.home = homeFolder()};
  const auto root = environmentValue("CORVANE_ROOT");
  if (root.empty() || root == "/") return places;
  if (root.front() != '/')
    return failure("CRVPlaces", 1, "CORVANE_ROOT must be an absolute path; it is \"" + root + "\".");
  if (const auto own = checkOwnFolder(root); !own) return std::unexpected(own.error().within("CORVANE_ROOT"));
  std::error_code ignored;
  // Bundles of running processes have canonical paths, and are compared with those below the root.
  places.root = std::filesystem::canonical(root, ignored);
  return places;
}

}  // namespace corvane
