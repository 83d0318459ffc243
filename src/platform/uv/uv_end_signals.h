// Hears in the loop what asks this process to end.
#pragma once

#include <functional>
#include <initializer_list>
#include <vector>

struct uv_loop_s;

namespace corvane {

// Main thread. While it lives the signals do not end the process; behind it they do what they do by default. One that
// was ignored when it is made stays ignored, as whoever started the process wants it. The loop outlives it.
class UvEndSignals {
 public:
  // `told` runs inside a turn with the signal's number, each time that one comes. It may end this object.
  UvEndSignals(uv_loop_s* loop, std::initializer_list<int> signals, std::function<void(int signal)> told);
  ~UvEndSignals();
  UvEndSignals(const UvEndSignals&) = delete;
  UvEndSignals& operator=(const UvEndSignals&) = delete;

 private:
  struct Handle;
  std::vector<Handle*> handles_;  // each gives itself up when libuv lets go of it
};

}  // namespace corvane
