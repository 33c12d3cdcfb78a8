// Which pictures are shown beside each other.

#include "Overview.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <QImage>
#include <QPainter>

namespace driftmark::gallery {

namespace {

const QColor desktop(0x7F, 0x9D, 0xB9);
constexpr int gap = 24;

/// The pictures `name` in each theme, from left to right.
QImage besideEachOther(const QDir& folder, const QString& name) {
  std::vector<QImage> pictures;
  QSize size(gap, 0);
  for (const char* const theme : {"light", "dark", "contrast"}) {
    const QImage picture(folder.filePath(QStringLiteral("%1-%2.png").arg(name, theme)));
    size = {size.width() + picture.width() + gap, std::max(size.height(), picture.height())};
    pictures.push_back(picture);
  }
  QImage all(size.width(), size.height() + 2 * gap, QImage::Format_RGB32);
  all.fill(desktop);
  QPainter painter(&all);
  int left = gap;
  for (const QImage& picture : pictures) {
    painter.drawImage(left, gap, picture);
    left += picture.width() + gap;
  }
  return all;
}

/// The symbols of the six states at 16 pixels, enlarged, on both grounds.
QImage states(const QDir& folder) {
  constexpr int enlarged = 8;
  constexpr int row = 24 * enlarged;
  QImage all(6 * 40 * enlarged, 2 * row, QImage::Format_RGB32);
  QPainter painter(&all);
  int top = 0;
  for (const char* const theme : {"light", "dark"}) {
    const QImage sheet(folder.filePath(QStringLiteral("symbols-enlarged-%1.png").arg(theme)));
    painter.drawImage(0, top, sheet, 0, 0, all.width(), row);
    top += row;
  }
  painter.end();
  return all.scaledToWidth(all.width() / 2);
}

} // namespace

void saveOverviews(const QDir& folder) {
  const auto save = [&folder](const QImage& picture, const char* name) {
    const QString file = folder.filePath(QStringLiteral("overview-%1.png").arg(name));
    if (!picture.save(file))
      throw std::runtime_error("cannot write " + file.toStdString());
  };
  save(besideEachOther(folder, "menu-transferring"), "menus");
  save(besideEachOther(folder, "alert"), "alerts");
  save(states(folder), "states");
}

} // namespace driftmark::gallery
