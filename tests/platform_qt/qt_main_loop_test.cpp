#include "platform/qt/qt_main_loop.h"

#include <QCoreApplication>
#include <QTimer>

#include "base/main_queue_contract.h"
#include "platform/uv/uv_main_loop.h"

namespace corvane {
namespace {

struct QtDriver {
  int argc = 1;
  char name[5] = "test";
  char* argv[2] = {name, nullptr};
  QCoreApplication application{argc, argv};
  SystemClock clock;
  UvMainLoop loop{clock};
  QtMainLoop qt{loop};

  MainQueue& main() { return loop.mainQueue(); }
  // Only watches; the turns must come from the loop under test.
  bool runUntil(const std::function<bool()>& done) {
    const auto deadline = clock.steadyNow() + 10s;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
      if (done() || clock.steadyNow() > deadline) QCoreApplication::exit(0);
    });
    look.start(1);
    qt.exec();
    return done();
  }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MainQueueContract, QtDriver);

TEST(QtMainLoopTest, QuitOfTheMainLoopEndsExecWithItsCode) {
  QtDriver driver;
  std::string heard;
  const auto timer = driver.main().after(2ms, [&] {
    heard += "t";
    driver.loop.quit(9);
  });
  QTimer::singleShot(0, [&] { driver.main().post([&] { heard += "p"; }); });
  EXPECT_EQ(driver.qt.exec(), 9);
  EXPECT_EQ(heard, "pt");
}

}  // namespace
}  // namespace corvane
