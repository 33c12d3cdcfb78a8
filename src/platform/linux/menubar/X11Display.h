#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QSize>

struct xcb_connection_t;

namespace driftmark {

/// The X display that Qt shows its windows on, for what Qt has no functions for. What the display
/// does not know is empty or 0; a change of a window that is gone has no effect. Main thread only.
class X11Display {
public:
  using Window = std::uint32_t;
  using Atom = std::uint32_t;

  /// The 32-bit values of a property.
  using Values = std::vector<std::uint32_t>;

  /// None when Qt shows its windows elsewhere.
  static std::optional<X11Display> current();

  Window root() const { return root_; }

  /// The size of the root window, which spans all screens, in device pixels.
  QSize size() const;

  Atom atom(const std::string& name) const;

  Values values(Window window, const std::string& property) const;

  /// That property of each window, for about the time of one.
  std::vector<Values> values(const std::vector<Window>& windows, const std::string& property) const;

  void setNumbers(Window window, const std::string& property, const Values& numbers);

  /// Has the window manager give `window` the keyboard focus only after it has asked the program,
  /// by the message WM_TAKE_FOCUS.
  void setAsksForFocus(Window window);

  /// Takes the keyboard focus, as of the time of the message that asked.
  void takeFocus(Window window, std::uint32_t time);

  /// Asks the window manager to give `window` the keyboard focus, in the name of the user.
  void activate(Window window);

  /// Whether a compositor runs, so that windows can be translucent.
  bool isComposited() const;

private:
  explicit X11Display(xcb_connection_t& connection);

  xcb_connection_t& connection_;
  Window root_;
  mutable std::map<std::string, Atom> atoms_;
};

} // namespace driftmark
