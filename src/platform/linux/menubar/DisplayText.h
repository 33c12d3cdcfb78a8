#pragma once

#include <QFontMetricsF>
#include <QString>
#include <QStringList>

class QPoint;
class QWidget;

/// How texts of files and tools, which may hold anything, are drawn: as they are, but so that they
/// can neither break a line nor disturb what stands beside them. None of this changes a text that
/// is kept, compared or read aloud.
namespace driftmark::display_text {

/// In one line of at most `width`: control characters by their pictures, cut in the middle where it
/// is too long.
struct Line {
  QString text;
  bool isCut;
};
Line line(const QString& text, const QFontMetricsF& metrics, qreal width);

/// A line with every stretch of right-to-left writing set apart, so that what stands around it
/// keeps its order. The same text when there is no such stretch.
QString inOrder(const QString& line);

/// Shows a tool tip of plain text at a position on the screen.
void showToolTip(const QPoint& position, const QStringList& paragraphs, QWidget* widget);

/// What such a tool tip draws, in lines that fit a screen: never taken for markup.
QString toolTip(const QStringList& paragraphs);

} // namespace driftmark::display_text
