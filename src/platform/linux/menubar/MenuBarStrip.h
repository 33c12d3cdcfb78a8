#pragma once

#include "platform/linux/menubar/SymbolImages.h"

#include <functional>
#include <string>

#include <QWidget>

namespace driftmark {

/// The strip at the top right of the first screen that stands for the system's menu bar: a symbol
/// and, where there is one, a title behind it. It stays above other windows, is in no task bar and
/// does not take the keyboard focus by itself. Clicked, or with the focus and the space bar, Enter
/// or the down key, it asks for its menu. Screen readers read the symbol's description. Main
/// thread.
class MenuBarStrip final : public QWidget {
public:
  /// `images` outlives the strip.
  MenuBarStrip(SymbolImages& images, std::function<void()> onPress);

  /// The symbol of that name; none where there is no such symbol.
  void setSymbol(const std::string& name, const QString& description);
  void setTitle(const std::string& title);

  /// Whether the strip is drawn as its menu's owner.
  void setHighlighted(bool highlighted);

  /// Presses the strip, as a click does.
  void press() { onPress_(); }

  const std::string& symbol() const { return symbol_; }
  const std::string& title() const { return title_; }
  bool isHighlighted() const { return isHighlighted_; }

  /// How often the strip was drawn; it is not drawn again without a change.
  int paintCount() const { return paintCount_; }

protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

private:
  void useSystemFont();
  void followScreen();
  void fit();
  void place();

  SymbolImages& images_;
  const std::function<void()> onPress_;
  std::string symbol_;
  std::string title_;
  QString shownTitle_;
  bool isHighlighted_ = false;
  bool showsFocus_ = false;
  int paintCount_ = 0;
  QMetaObject::Connection screenConnection_;
};

} // namespace driftmark
