// Tells when a descriptor that somebody else owns can be read or written.
#pragma once

#include <functional>

struct uv_loop_s;

namespace corvane {

enum class DescriptorEvents { none = 0, readable = 1, writable = 2, both = 3 };

// Main thread. The descriptor is closed after this has died, the loop after that. `ready` may end this object.
class UvDescriptor {
 public:
  // Not blocking from now on. `ready` runs inside a turn; a hang-up counts as both events.
  UvDescriptor(uv_loop_s* loop, int descriptor, std::function<void(DescriptorEvents)> ready);
  ~UvDescriptor();
  UvDescriptor(const UvDescriptor&) = delete;
  UvDescriptor& operator=(const UvDescriptor&) = delete;

  // False for a descriptor that cannot be waited for; it never becomes ready then.
  [[nodiscard]] bool works() const { return works_; }
  // Nothing at first. To be said again after both events came at once, since a hang-up ends the waiting. Waiting is
  // nobody's reason to run.
  void await(DescriptorEvents events);

 private:
  struct Handle;
  Handle* handle_;  // gives itself up when libuv lets go of it
  bool works_;
};

}  // namespace corvane
