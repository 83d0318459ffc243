// One application object for all tests, without a display and without a trace in the user's folders.

#include <QGuiApplication>
#include <QTemporaryDir>

#include "support/test.h"
#include "ui/windows_application.h"

int main(int argc, char** argv) {
  const QTemporaryDir scratch;
  for (const char* folder : {"XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
    qputenv(folder, scratch.path().toUtf8());
  corvane::ui::drawWithoutDisplay();
  testing::InitGoogleTest(&argc, argv);
  QGuiApplication application(argc, argv);
  corvane::ui::prepareApplication();
  return RUN_ALL_TESTS();
}
