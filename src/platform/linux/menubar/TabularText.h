#pragma once

#include <QString>

class QFontMetricsF;
class QPainter;
class QPointF;

/// Text whose digits are all as wide as the widest one, whatever the font does.
namespace driftmark::tabular_text {

qreal width(const QString& text, const QFontMetricsF& metrics);

/// Draws with the painter's font, from a point on the base line.
void draw(QPainter& painter, const QPointF& position, const QString& text);

} // namespace driftmark::tabular_text
