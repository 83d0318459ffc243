// The icons of installed applications for QML, read off the main thread: image://application/<bundle's path, percent
// encoded>. What has none, or one in an older form, gives an empty picture of one pixel, for which the row shows its
// monogram.
#pragma once

#include <QQuickImageProvider>

namespace corvane::ui {

class ApplicationIcons final : public QQuickImageProvider {
 public:
  ApplicationIcons() : QQuickImageProvider(QQuickImageProvider::Image, ForceAsynchronousImageLoading) {}
  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

}  // namespace corvane::ui
