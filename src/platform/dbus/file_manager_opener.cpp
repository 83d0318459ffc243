#include "platform/dbus/file_manager_opener.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>
#include <vector>

#include "platform/dbus/bus_call.h"

namespace corvane {

namespace {

constexpr const char* kFileManager = "org.freedesktop.FileManager1";
// A file manager that has to start first takes its time.
constexpr Duration kLimit = 25s;

}  // namespace

std::string fileUri(const std::filesystem::path& file) {
  constexpr std::string_view kPlain = "/-._~";
  std::string uri = "file://";
  for (const char sign : file.string()) {
    const bool alphanumeric =
        (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z') || (sign >= '0' && sign <= '9');
    if (alphanumeric || kPlain.find(sign) != std::string_view::npos)
      uri += sign;
    else
      uri += fmt::format("%{:02X}", static_cast<unsigned>(static_cast<unsigned char>(sign)));
  }
  return uri;
}

void FileManagerOpener::reveal(const std::filesystem::path& file, Completion<Status> done) {
  ask<>(
      session_,
      {.object = {.owner = kFileManager, .path = "/org/freedesktop/FileManager1", .interface = kFileManager},
       .method = "ShowItems"},
      kLimit,
      [done = std::move(done)](const Result<BusAnswer<>>& answer) mutable {
        done(answer ? Status() : Status(std::unexpected(answer.error())));
      },
      std::vector<std::string>{fileUri(file)}, std::string());
}

}  // namespace corvane
