// How the application's icon is drawn in its windows.

#include "platform/linux/dialogs/IconView.h"

#include <QPainter>

namespace driftmark {

namespace {

const QString& file() {
  static const QString file = QStringLiteral(":/driftmark/icon.svg");
  return file;
}

} // namespace

QIcon applicationIcon() {
  return QIcon(file());
}

IconView::IconView(int size, QWidget* parent) : QWidget(parent), icon_(file()) {
  setObjectName(QStringLiteral("icon"));
  setFixedSize(size, size);
}

void IconView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  icon_.render(&painter, rect());
}

} // namespace driftmark
