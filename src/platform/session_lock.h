// The advisory lock by which one program of a user's session tells that it runs.
#pragma once

#include <filesystem>
#include <string>

namespace corvane {

// Main thread. The kernel drops the lock when the process ends, however it ends.
class SessionLock {
 public:
  enum class Outcome { taken, heldByOther, couldNotMakeFolder, couldNotOpen };
  struct Attempt {
    Outcome outcome = Outcome::taken;
    std::string error;  // the system's own words for the two failures
  };

  virtual ~SessionLock() = default;
  // One try that never waits. `take` makes the folder and the file when they are missing, `takeExisting`
  // fails with couldNotOpen then. Both are taken at once when the lock is held already.
  [[nodiscard]] virtual Attempt take() = 0;
  [[nodiscard]] virtual Attempt takeExisting() = 0;
  // As take(), but beside others that took it shared; whoever wants it alone is refused while one of them lives.
  [[nodiscard]] virtual Attempt takeShared() = 0;
  // The same, after whoever holds it alone has ended: it blocks, so nothing of this program may be waited for.
  [[nodiscard]] virtual Attempt awaitShared() = 0;
  [[nodiscard]] virtual const std::filesystem::path& path() const = 0;
};

}  // namespace corvane
