#pragma once

#include <map>
#include <string>
#include <tuple>

#include <QColor>
#include <QPixmap>

namespace driftmark {

/// The symbols that this front brings along, as template images: shapes that take the colour asked
/// for. Each is a file in symbols/ that bears its name, drawn on a grid of 16 by 16 in strokes 1.4
/// wide. Every image is drawn once and kept. Main thread only.
class SymbolImages {
public:
  /// Whether there is a symbol of that name.
  static bool has(const std::string& name);

  /// The symbol in that colour, `size` device-independent pixels wide and high, sharp at `ratio`
  /// device pixels for one of them. A null image for an unknown name.
  QPixmap image(const std::string& name, const QColor& colour, int size, qreal ratio);

private:
  using Key = std::tuple<std::string, QRgb, int, qreal>;

  std::map<Key, QPixmap> images_;
};

} // namespace driftmark
