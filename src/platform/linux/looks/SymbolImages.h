#pragma once

#include <map>
#include <string>
#include <tuple>

#include <QColor>
#include <QPixmap>

namespace driftmark {

/// The symbols of the Linux frontend as template images: shapes drawn in any colour. Each is a file
/// of its name in symbols/, on a grid of 16 by 16. Stems are 2 wide and other strokes 1.5, and
/// straight edges lie on the grid. The six states share one cloud, with their sign cut out of it.
/// Images are cached. Main thread only.
class SymbolImages {
public:
  /// Whether there is a symbol of that name.
  static bool has(const std::string& name);

  /// The symbol in that colour, `size` device-independent pixels wide and high, drawn for `ratio`
  /// device pixels per device-independent one. A null image for an unknown name.
  QPixmap image(const std::string& name, const QColor& colour, int size, qreal ratio);

private:
  using Key = std::tuple<std::string, QRgb, int, qreal>;

  std::map<Key, QPixmap> images_;
};

} // namespace driftmark
