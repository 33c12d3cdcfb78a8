#pragma once

#include <QFontMetricsF>
#include <QString>
#include <QStringList>

class QPoint;
class QWidget;

namespace driftmark {

// Names of files and output of tools may contain anything. These functions shorten them and make
// them safe to draw: they cannot break a line or affect the text around them. Use the result for
// drawing only, not where a text is stored, compared or read aloud. Main thread only.

/// A text on one line.
struct ElidedLine {
  QString text;
  bool isElided; ///< whether the middle was left out
  qreal width;
};

/// The text on one line of at most `width`, with "…" in the middle if it is longer. Control
/// characters are replaced by their pictures.
ElidedLine elidedLine(const QString& text, const QFontMetricsF& metrics, qreal width);

/// The line with each run of right-to-left characters isolated, so that the text around it keeps
/// its order. Unchanged without such a run.
QString withIsolatedRightToLeft(const QString& line);

/// Shows a tool tip of plain text at a position on the screen.
void showPlainToolTip(const QPoint& position, const QStringList& paragraphs, QWidget* widget);

/// The text that such a tool tip draws: shortened and wrapped to fit the screen, never markup.
QString plainToolTip(const QStringList& paragraphs);

} // namespace driftmark
