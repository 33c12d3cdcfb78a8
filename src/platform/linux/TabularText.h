#pragma once

#include <QString>

class QFontMetricsF;
class QPainter;
class QPointF;

namespace driftmark {

/// Text whose digits are all as wide as the widest one, whatever the font does.
namespace tabular_text {

qreal width(const QString& text, const QFontMetricsF& metrics);

/// Draws with the painter's font, from a point on the base line.
void draw(QPainter& painter, const QPointF& position, const QString& text);

} // namespace tabular_text

} // namespace driftmark
