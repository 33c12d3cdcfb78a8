#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QRect>

struct xcb_connection_t;

namespace driftmark::test {

/// A program of the test on an X display: it has windows of its own and sees what others have
/// declared. Every wait ends on an event of the display, or throws TimedOut.
class XClient {
public:
  using Window = std::uint32_t;
  using Values = std::vector<std::uint32_t>;

  /// Throws std::runtime_error when the display does not answer.
  explicit XClient(const std::string& display);

  /// Waits until the display shows a window with that title that its window manager, if any, lists.
  Window await(const std::string& title);

  /// The windows with that title that are shown now.
  std::vector<Window> shown(const std::string& title);

  /// Shows an ordinary window and waits until it has the keyboard focus.
  Window open(const std::string& title, const QRect& place);

  /// Shows a panel across the upper edge of the screen and waits until it is listed.
  Window openPanel(const std::string& title, const QRect& place);

  void close(Window window);

  /// Asks the window manager by a message about `window`.
  void ask(Window window, const std::string& message, const Values& data);

  /// Asks the program of `window` to close it.
  void askToClose(Window window);

  Window root() const { return root_; }
  std::uint32_t atom(const std::string& name);
  Values property(Window window, const std::string& name);

  /// The name of the first atom in a property; empty when there is none.
  std::string firstAtom(Window window, const std::string& name);

  QRect place(Window window);
  bool isShown(Window window);

  /// The bits of a pixel: 32 with transparency.
  int depth(Window window);

  /// Whether it is one of the windows that programs show.
  bool isListed(Window window);

  /// The window that receives the keys.
  Window focus();

  /// How many keys a window of this program received.
  int keys(Window window) const;

  /// Waits until `condition` holds. `event` says in words what that means.
  void await(const std::string& event, const std::function<bool()>& condition);

private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const;
  };

  Window add(const std::string& title, const QRect& place);
  void send(Window receiver, std::uint32_t mask, Window window, const std::string& message,
            const Values& data);
  void watch(Window window, std::uint32_t moreEvents = 0);
  void setProperty(Window window, const std::string& name, std::uint32_t type,
                   const Values& values);
  std::vector<Window> candidates();
  std::vector<Window> children(Window window);
  std::string title(Window window);
  bool readEvents();

  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  Window root_ = 0;
  std::map<Window, int> keys_;
};

} // namespace driftmark::test
