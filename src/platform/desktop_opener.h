// Shows the user a file in the desktop's file manager.
#pragma once

#include <filesystem>

#include "base/error.h"
#include "base/task.h"

namespace corvane {

// Main thread.
class DesktopOpener {
 public:
  virtual ~DesktopOpener() = default;

  // Opens the file's folder with the file selected. `done` runs once in a later turn: whether a file manager took it.
  virtual void reveal(const std::filesystem::path& file, Completion<Status> done) = 0;
};

}  // namespace corvane
