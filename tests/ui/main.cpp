// One application object for all tests, without a display and without a trace in the user's folders.

#include <QGuiApplication>
#include <QTemporaryDir>

#include "support/test.h"
#include "ui/windows_application.h"

namespace {

QtMessageHandler told = nullptr;

// A layout or a binding that Qt gave up leaves a window broken that every other check may pass.
void failOnLoops(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.contains(QStringLiteral("loop detected"), Qt::CaseInsensitive)) ADD_FAILURE() << message.toStdString();
  told(type, context, message);
}

}  // namespace

int main(int argc, char** argv) {
  const QTemporaryDir scratch;
  for (const char* folder : {"XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
    qputenv(folder, scratch.path().toUtf8());
  told = qInstallMessageHandler(failOnLoops);
  corvane::ui::drawWithoutDisplay();
  testing::InitGoogleTest(&argc, argv);
  QGuiApplication application(argc, argv);
  corvane::ui::prepareApplication();
  return RUN_ALL_TESTS();
}
