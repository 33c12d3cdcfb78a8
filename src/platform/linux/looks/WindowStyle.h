#pragma once

#include <QProxyStyle>

namespace driftmark {

/// The desktop's style, without icons on buttons. Where the desktop has none of its own, buttons
/// are flat, the default one filled with the colour of chosen rows, fields have a plain edge, and
/// the icons of the folder panel are symbols. Main thread only.
class WindowStyle final : public QProxyStyle {
public:
  /// `name` is the name of the desktop's style.
  explicit WindowStyle(const QString& name);

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                     const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returnData) const override;

private:
  const bool isFlat_;
};

} // namespace driftmark
