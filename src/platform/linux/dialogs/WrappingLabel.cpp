// How a label breaks its text into lines.

#include "platform/linux/dialogs/WrappingLabel.h"

#include <cmath>

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextOption>

namespace driftmark {

namespace {

constexpr qreal lineHeight = 130; ///< in percent

} // namespace

WrappingLabel::WrappingLabel(const QString& text) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true); // the height depends on the width
  setText(text);

  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  document_.setUndoRedoEnabled(false);
  document_.setDocumentMargin(0);
  document_.setDefaultFont(font());
  document_.setDefaultTextOption(option);
  QTextBlockFormat format;
  format.setLineHeight(lineHeight, QTextBlockFormat::ProportionalHeight);
  QTextCursor cursor(&document_);
  cursor.setBlockFormat(format);
  cursor.insertText(text);
}

int WrappingLabel::heightForWidth(int width) const {
  document_.setTextWidth(width);
  return static_cast<int>(std::ceil(document_.size().height()));
}

QSize WrappingLabel::sizeHint() const {
  return {width(), heightForWidth(width())};
}

QSize WrappingLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth(), fontMetrics().height()};
}

void WrappingLabel::paintEvent(QPaintEvent* event) {
  document_.setTextWidth(width());
  QAbstractTextDocumentLayout::PaintContext context;
  context.clip = event->rect();
  context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
  QPainter painter(this);
  document_.documentLayout()->draw(&painter, context);
}

void WrappingLabel::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::FontChange)
    document_.setDefaultFont(font());
}

} // namespace driftmark
