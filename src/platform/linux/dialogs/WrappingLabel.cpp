// How a label breaks its text into lines.

#include "platform/linux/dialogs/WrappingLabel.h"

#include <cmath>

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextOption>

namespace driftmark {

namespace {

constexpr qreal lineHeight = 115; ///< in percent

} // namespace

WrappingLabel::WrappingLabel(const QString& text) {
  setTextFormat(Qt::PlainText);
  setText(text);
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

int WrappingLabel::heightForWidth(int width) const {
  QTextDocument document;
  layOut(document, width);
  return static_cast<int>(std::ceil(document.size().height()));
}

QSize WrappingLabel::sizeHint() const {
  return {width(), heightForWidth(width())};
}

QSize WrappingLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth(), fontMetrics().height()};
}

void WrappingLabel::paintEvent(QPaintEvent* /*event*/) {
  QTextDocument document;
  layOut(document, width());
  QAbstractTextDocumentLayout::PaintContext context;
  context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
  QPainter painter(this);
  document.documentLayout()->draw(&painter, context);
}

void WrappingLabel::layOut(QTextDocument& document, int width) const {
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  document.setDocumentMargin(0);
  document.setDefaultFont(font());
  document.setDefaultTextOption(option);
  document.setPlainText(text());
  document.setTextWidth(width);
  QTextBlockFormat format;
  format.setLineHeight(lineHeight, QTextBlockFormat::ProportionalHeight);
  QTextCursor cursor(&document);
  cursor.select(QTextCursor::Document);
  cursor.mergeBlockFormat(format);
}

} // namespace driftmark
