#include "platform/linux/menubar/TabularText.h"

#include <algorithm>

#include <QFontMetricsF>
#include <QPainter>

namespace driftmark::tabular_text {

namespace {

bool isDigit(QChar character) {
  return character >= u'0' && character <= u'9';
}

qreal digitWidth(const QFontMetricsF& metrics) {
  qreal widest = 0;
  for (char16_t digit = u'0'; digit <= u'9'; ++digit)
    widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
  return widest;
}

/// Calls `place` for each digit and each stretch between digits, with where it begins and how much
/// room it has. Returns the width of all.
template <class Place>
qreal lay(const QString& text, const QFontMetricsF& metrics, const Place& place) {
  const qreal digit = digitWidth(metrics);
  qreal x = 0;
  for (qsizetype at = 0; at < text.size();) {
    const QChar* const begin = text.cbegin() + at;
    const qsizetype length =
        isDigit(*begin) ? 1 : std::find_if(begin, text.cend(), isDigit) - begin;
    const QString part = text.sliced(at, length);
    const qreal room = isDigit(*begin) ? digit : metrics.horizontalAdvance(part);
    place(part, x, room);
    x += room;
    at += length;
  }
  return x;
}

} // namespace

qreal width(const QString& text, const QFontMetricsF& metrics) {
  return lay(text, metrics, [](const QString&, qreal, qreal) {});
}

void draw(QPainter& painter, const QPointF& position, const QString& text) {
  const QFontMetricsF metrics(painter.font(), painter.device());
  lay(text, metrics, [&](const QString& part, qreal x, qreal room) {
    const qreal margin = (room - metrics.horizontalAdvance(part)) / 2;
    painter.drawText(position + QPointF(x + margin, 0), part);
  });
}

} // namespace driftmark::tabular_text
