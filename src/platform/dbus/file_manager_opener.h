// The file manager of the session, by the interface that desktops have agreed on.
#pragma once

#include "platform/dbus/bus_link.h"
#include "platform/desktop_opener.h"

namespace corvane {

// Main thread. The link outlives it.
class FileManagerOpener final : public DesktopOpener {
 public:
  explicit FileManagerOpener(BusLink& session) : session_(session) {}
  void reveal(const std::filesystem::path& file, Completion<Status> done) override;

 private:
  BusLink& session_;
};

// "file:///Library/Logs/a%20b", as file managers want it.
[[nodiscard]] std::string fileUri(const std::filesystem::path& file);

}  // namespace corvane
