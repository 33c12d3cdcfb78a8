#pragma once

#include <QIcon>
#include <QSvgRenderer>
#include <QWidget>

namespace driftmark {

/// The application's icon, for title bars. It takes memory, so only windows with a title bar have
/// it.
QIcon applicationIcon();

/// The application's icon, sharp in every resolution.
class IconView final : public QWidget {
public:
  /// `size` in device-independent pixels.
  IconView(int size, QWidget* parent);

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  QSvgRenderer icon_;
};

} // namespace driftmark
