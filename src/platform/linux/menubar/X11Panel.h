#pragma once

#include "platform/linux/menubar/X11Display.h"

#include <functional>
#include <optional>
#include <vector>

#include <QAbstractNativeEventFilter>
#include <QRect>

class QScreen;
class QWidget;

namespace driftmark {

/// What makes a window a panel of the desktop on an X display: it is on all workspaces, reserves
/// its part of the screen's upper edge, and has the keyboard focus only when the user asks for it
/// by keyboard, not when the user clicks on it. Elsewhere it does nothing. Main thread only.
class X11Panel final : public QAbstractNativeEventFilter {
public:
  /// `window` outlives the panel. `onChange` is called when other panels leave another area free.
  X11Panel(QWidget& window, std::function<void()> onChange);

  /// The part of the screen that other panels leave free, as far as they say so by
  /// _NET_WM_STRUT_PARTIAL.
  QRect freeArea(const QScreen& screen) const;

  /// Declares the window to be a panel. Called each time before it is shown: its native window is
  /// another one after it was closed.
  void declare();

  /// Keeps the upper edge of the screen, down to the window's lower end, free of other windows.
  /// Where another screen is above, that would take away a part of that one; nothing is reserved.
  void reserve(const QScreen& screen);

  /// Gives the keyboard focus back to the window that had it before this one.
  void giveFocusBack();

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
  X11Display::Window number() const;
  std::vector<X11Display::Values> readStruts() const;
  void answerFocusRequest(std::uint32_t time);

  QWidget& window_;
  const std::function<void()> onChange_;
  std::optional<X11Display> display_;
  std::vector<X11Display::Values> struts_; ///< of the other windows
  X11Display::Values reserved_;
  X11Display::Window focusedBefore_ = 0;
};

} // namespace driftmark
