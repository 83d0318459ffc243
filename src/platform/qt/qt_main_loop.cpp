#include "platform/qt/qt_main_loop.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include "platform/uv/uv_main_loop.h"

namespace corvane {

struct QtMainLoop::Impl {
  explicit Impl(UvMainLoop& driven) : loop(driven), ready(driven.pollableDescriptor(), QSocketNotifier::Read) {
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ready, &QSocketNotifier::activated, &timer, [this] { turn(); });
    QObject::connect(&timer, &QTimer::timeout, &timer, [this] { turn(); });
    // The first turn tells the kernel of the handles; until then nothing would wake us.
    timer.start(0);
  }

  void turn() {
    // A menu or a drag may run Qt's loop inside a turn; turns do not nest, and the outer one goes on.
    if (turning) return;
    turning = true;
    loop.turn();
    turning = false;
    if (const auto code = loop.quitCode()) {
      QCoreApplication::exit(*code);
      return;
    }
    if (const auto wait = loop.waitAtMost())
      timer.start(std::chrono::ceil<std::chrono::milliseconds>(*wait));
    else
      timer.stop();
  }

  UvMainLoop& loop;
  QSocketNotifier ready;
  QTimer timer;
  bool turning = false;
};

QtMainLoop::QtMainLoop(UvMainLoop& loop) : impl_(std::make_unique<Impl>(loop)) {}
QtMainLoop::~QtMainLoop() = default;

int QtMainLoop::exec() {
  if (const auto code = impl_->loop.quitCode()) return *code;
  return QCoreApplication::exec();
}

}  // namespace corvane
