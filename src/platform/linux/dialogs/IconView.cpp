// How the application's icon is drawn in its windows.

#include "platform/linux/dialogs/IconView.h"

#include <QPainter>

namespace driftmark {

IconView::IconView(int size, QWidget* parent)
    : QWidget(parent), icon_(QStringLiteral(":/driftmark/icon.svg")) {
  setObjectName(QStringLiteral("icon"));
  setFixedSize(size, size);
}

void IconView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  icon_.render(&painter, rect());
}

} // namespace driftmark
