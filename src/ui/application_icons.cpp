#include "ui/application_icons.h"

#include <QFile>
#include <QImage>
#include <QUrl>

#include "base/atomic_file.h"
#include "core/discovery/bundle_reader.h"
#include "core/discovery/icon_container.h"

namespace corvane::ui {
namespace {

QImage nothing() {
  QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

}  // namespace

QImage ApplicationIcons::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const auto side = std::max({requestedSize.width(), requestedSize.height(), 1});
  const auto path = QUrl::fromPercentEncoding(id.toUtf8()).toStdString();
  QImage image;
  if (const auto file = bundleIconFile(path)) {
    const auto bytes = readFile(*file, kIconFileLimit);
    const auto picture = bytes ? bestIconPicture(*bytes, static_cast<std::uint32_t>(side)) : std::nullopt;
    if (picture)
      image.loadFromData(reinterpret_cast<const uchar*>(picture->data()), static_cast<int>(picture->size()), "PNG");
  }
  image = image.isNull() ? nothing() : image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  if (size != nullptr) *size = image.size();
  return image;
}

}  // namespace corvane::ui
