// Draws our symbols for QML in the colour and size asked for: image://symbol/<name>/<colour>/<knock-out colour>,
// colours as six or eight hexadecimal digits.
#pragma once

#include <QQuickImageProvider>

namespace corvane::ui {

class SymbolImages final : public QQuickImageProvider {
 public:
  SymbolImages() : QQuickImageProvider(QQuickImageProvider::Pixmap) {}
  QPixmap requestPixmap(const QString& id, QSize* size, const QSize& requestedSize) override;
};

}  // namespace corvane::ui
