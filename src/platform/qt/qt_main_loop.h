// Lets Qt's event loop drive the turns of the main queue once windows exist. Makes no window and no
// application object; one of the latter must stand before and outlive this.
#pragma once

#include <memory>

namespace corvane {

class UvMainLoop;

// Main thread. While it lives, turns run inside Qt's loop, so UvMainLoop::run and pump must not be called.
class QtMainLoop {
 public:
  explicit QtMainLoop(UvMainLoop& loop);
  ~QtMainLoop();
  QtMainLoop(const QtMainLoop&) = delete;
  QtMainLoop& operator=(const QtMainLoop&) = delete;

  // Qt's exec() until UvMainLoop::quit or QCoreApplication::exit; gives the code of whichever came. A
  // handler of Qt's own that starts a libuv handle without arming a timer or posting must post, for only
  // a turn makes the loop take notice.
  int exec();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane
