#include "platform/linux/menubar/WrappedText.h"

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

WrappedText::WrappedText(const QString& text) {
  setTextFormat(Qt::PlainText);
  setText(text);
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

int WrappedText::heightForWidth(int width) const {
  QTextDocument document;
  lay(document, width);
  return static_cast<int>(std::ceil(document.size().height()));
}

QSize WrappedText::sizeHint() const {
  return {width(), heightForWidth(width())};
}

QSize WrappedText::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth(), fontMetrics().height()};
}

void WrappedText::paintEvent(QPaintEvent* /*event*/) {
  QTextDocument document;
  lay(document, width());
  QAbstractTextDocumentLayout::PaintContext context;
  context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
  QPainter painter(this);
  document.documentLayout()->draw(&painter, context);
}

void WrappedText::lay(QTextDocument& document, int width) const {
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
