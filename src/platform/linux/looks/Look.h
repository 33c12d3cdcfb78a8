#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace driftmark {

/// Lengths and colours of the windows of the Linux frontend. Lengths are stated in points, which
/// are device-independent pixels for a font of 13 pixels, and grow with the font. Main thread only.
class Look {
public:
  Look(const QPalette& palette, const QFont& font);

  /// Gives the application its look: palette, font and style, as far as the desktop has not decided
  /// them. Called again when the desktop's theme has changed.
  static void apply();

  /// The palette for a desktop with this one: light or dark as that is. A palette of high contrast
  /// is left as it is.
  static QPalette paletteFor(const QPalette& desktop);

  /// The font for a desktop with this one. Only a font that no desktop has named is replaced.
  static QFont fontFor(const QFont& desktop);

  /// In whole device-independent pixels, at least one. Hairlines do not grow.
  int length(qreal points) const;
  static constexpr int hairline = 1;

  /// The size of symbols: no smaller than the grid that they are drawn on.
  int symbolSize() const;

  /// The font in another size.
  QFont font(qreal points, QFont::Weight weight = QFont::Normal) const;

  QColor ground() const;    ///< of every window
  QColor ink() const;       ///< of texts and symbols
  QColor label() const;     ///< of texts that cannot be chosen
  QColor detail() const;    ///< of what follows a name, and of shortcuts
  QColor separator() const; ///< of lines between rows
  QColor edge() const;      ///< of lines around windows and buttons
  QColor chosen() const;    ///< behind a chosen row and the default button
  QColor inkOnChosen() const;
  QColor warning() const; ///< of symbols that ask for attention

private:
  const QPalette palette_;
  const QFont font_;
  const qreal scale_;
  const bool hasHighContrast_;
};

} // namespace driftmark
