// What an X display and its window manager learn about the strip.

#include "platform/linux/menubar/X11Panel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <QWidget>

#include <xcb/xcb.h>

namespace driftmark {

namespace {

constexpr std::uint32_t allDesktops = 0xFFFFFFFF;
constexpr std::uint8_t sentByProgram = 0x80; ///< a flag beside the type of an event

const std::string clientList = "_NET_CLIENT_LIST";
const std::string workArea = "_NET_WORKAREA";
const std::string partialStrut = "_NET_WM_STRUT_PARTIAL";

/// The members of _NET_WM_STRUT_PARTIAL: how much of each edge of the root window is reserved, and
/// from where to where, inclusive. The first four alone are _NET_WM_STRUT.
namespace strut {
constexpr std::size_t right = 1;
constexpr std::size_t top = 2;
constexpr std::size_t edges = 4;
constexpr std::size_t rightStart = 6;
constexpr std::size_t rightEnd = 7;
constexpr std::size_t topStart = 8;
constexpr std::size_t topEnd = 9;
constexpr std::size_t size = 12;
} // namespace strut

int inPixels(int length, const QScreen& screen) {
  return static_cast<int>(std::lround(length * screen.devicePixelRatio()));
}

/// In device pixels. Qt scales the sizes of screens, but not where they begin.
QRect pixelsOf(const QScreen& screen) {
  const QRect area = screen.geometry();
  return {area.topLeft(), QSize(inPixels(area.width(), screen), inPixels(area.height(), screen))};
}

bool overlap(std::uint32_t first, std::uint32_t last, int from, int upTo) {
  return static_cast<int>(first) <= upTo && static_cast<int>(last) >= from;
}

} // namespace

X11Panel::X11Panel(QWidget& window, std::function<void()> onChange)
    : window_(window), onChange_(std::move(onChange)), display_(X11Display::current()) {
  if (!display_)
    return;
  struts_ = readStruts();
  QCoreApplication::instance()->installNativeEventFilter(this);
}

X11Display::Window X11Panel::number() const {
  return static_cast<X11Display::Window>(window_.internalWinId());
}

std::vector<X11Display::Values> X11Panel::readStruts() const {
  auto windows = display_->values(display_->root(), clientList);
  std::erase(windows, number());
  auto struts = display_->values(windows, partialStrut);
  std::erase_if(struts, [](const auto& strut) { return strut.size() < strut::size; });
  return struts;
}

QRect X11Panel::freeArea(const QScreen& screen) const {
  if (!display_)
    return screen.availableGeometry();
  const QRect whole = pixelsOf(screen);
  const int rootWidth = display_->size().width();
  int top = whole.top();
  int right = whole.right();
  for (const auto& other : struts_) {
    const int lower = static_cast<int>(other[strut::top]);
    const int left = rootWidth - static_cast<int>(other[strut::right]);
    // What reaches beyond the middle belongs to a screen below or to the left.
    if (lower <= whole.center().y() &&
        overlap(other[strut::topStart], other[strut::topEnd], whole.left(), whole.right()))
      top = std::max(top, lower);
    if (left > whole.center().x() &&
        overlap(other[strut::rightStart], other[strut::rightEnd], whole.top(), whole.bottom()))
      right = std::min(right, left - 1);
  }
  const qreal ratio = screen.devicePixelRatio();
  QRect area = screen.geometry();
  area.setTop(area.top() + static_cast<int>(std::ceil((top - whole.top()) / ratio)));
  area.setRight(area.right() - static_cast<int>(std::ceil((whole.right() - right) / ratio)));
  return area;
}

void X11Panel::declare() {
  if (!display_)
    return;
  // Qt applies this when it changes while there is a native window.
  for (const bool isDock : {false, true})
    window_.setAttribute(Qt::WA_X11NetWmWindowTypeDock, isDock);
  reserved_.clear();
  display_->setNumbers(number(), "_NET_WM_DESKTOP", {allDesktops});
  display_->setAsksForFocus(number());
}

void X11Panel::reserve(const QScreen& screen) {
  if (!display_ || number() == 0)
    return;
  const QRect whole = pixelsOf(screen);
  X11Display::Values edges(strut::size);
  if (whole.top() == 0) {
    const QRect place = window_.geometry().translated(-whole.topLeft());
    const int left = whole.left() + inPixels(place.left(), screen);
    edges[strut::top] = static_cast<std::uint32_t>(inPixels(place.bottom() + 1, screen));
    edges[strut::topStart] = static_cast<std::uint32_t>(left);
    edges[strut::topEnd] = static_cast<std::uint32_t>(left + inPixels(place.width(), screen) - 1);
  }
  if (edges == reserved_)
    return;
  reserved_ = edges;
  display_->setNumbers(number(), partialStrut, edges);
  edges.resize(strut::edges);
  display_->setNumbers(number(), "_NET_WM_STRUT", edges);
}

void X11Panel::giveFocusBack() {
  if (display_ && focusedBefore_ != 0 && window_.isActiveWindow())
    display_->activate(focusedBefore_);
}

/// A window manager also asks when the window is clicked: then the focus stays where it is.
void X11Panel::answerFocusRequest(std::uint32_t time) {
  if (window_.geometry().contains(QCursor::pos()) || QApplication::activeModalWidget() != nullptr)
    return;
  const auto active = display_->values(display_->root(), "_NET_ACTIVE_WINDOW");
  if (!active.empty() && active.front() != number())
    focusedBefore_ = active.front();
  display_->takeFocus(number(), time);
}

bool X11Panel::nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) {
  if (eventType != "xcb_generic_event_t")
    return false;
  const auto type = static_cast<const xcb_generic_event_t*>(message)->response_type;
  if ((type & ~sentByProgram) == XCB_PROPERTY_NOTIFY) {
    const auto& change = *static_cast<const xcb_property_notify_event_t*>(message);
    const bool isAboutPanels =
        change.window == display_->root() &&
        (change.atom == display_->atom(clientList) || change.atom == display_->atom(workArea));
    if (isAboutPanels && std::exchange(struts_, readStruts()) != struts_)
      onChange_();
  } else if ((type & ~sentByProgram) == XCB_CLIENT_MESSAGE) {
    const auto& request = *static_cast<const xcb_client_message_event_t*>(message);
    if (request.window == number() && request.type == display_->atom("WM_PROTOCOLS") &&
        request.format == 32 && request.data.data32[0] == display_->atom("WM_TAKE_FOCUS"))
      answerFocusRequest(request.data.data32[1]);
  }
  return false;
}

} // namespace driftmark
