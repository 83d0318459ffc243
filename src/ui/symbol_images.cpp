#include "ui/symbol_images.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QStringList>
#include <QSvgRenderer>

namespace corvane::ui {

QPixmap SymbolImages::requestPixmap(const QString& id, QSize* size, const QSize& requestedSize) {
  const QSize wanted = requestedSize.isValid() ? requestedSize : QSize(24, 24);
  QPixmap pixmap(wanted);
  pixmap.fill(Qt::transparent);
  if (size != nullptr) *size = wanted;

  const auto parts = id.split(u'/');
  QFile file(QStringLiteral(":/Corvane/symbols/%1.svg").arg(parts.value(0)));
  if (!file.open(QIODevice::ReadOnly)) return pixmap;
  QByteArray drawing = file.readAll();
  drawing.replace("currentColor", "#" + parts.value(1, QStringLiteral("000000")).toLatin1());
  drawing.replace("knockout", "#" + parts.value(2, QStringLiteral("ffffff")).toLatin1());

  QSvgRenderer renderer(drawing);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(wanted)));
  return pixmap;
}

}  // namespace corvane::ui
