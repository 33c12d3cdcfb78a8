// How symbols are drawn.

#include "platform/linux/looks/SymbolImages.h"

#include <cmath>

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace driftmark {

namespace {

QString fileOf(const std::string& name) {
  return QStringLiteral(":/driftmark/symbols/%1.svg").arg(QString::fromStdString(name));
}

QPixmap drawn(const std::string& name, const QColor& colour, int size, qreal ratio) {
  QSvgRenderer shape(fileOf(name));
  const int pixels = static_cast<int>(std::lround(size * ratio));
  QPixmap image(pixels, pixels);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  shape.render(&painter, QRectF(0, 0, pixels, pixels));
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), colour);
  painter.end();
  image.setDevicePixelRatio(ratio);
  return image;
}

} // namespace

bool SymbolImages::has(const std::string& name) {
  return name.find('/') == std::string::npos && QFile::exists(fileOf(name));
}

QPixmap SymbolImages::image(const std::string& name, const QColor& colour, int size, qreal ratio) {
  if (!has(name))
    return {};
  const auto [entry, isNew] = images_.try_emplace(Key(name, colour.rgba(), size, ratio));
  if (isNew)
    entry->second = drawn(name, colour, size, ratio);
  return entry->second;
}

} // namespace driftmark
