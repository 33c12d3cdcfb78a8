// How the X display is asked for, and changed in, what Qt has no functions for.

#include "platform/linux/menubar/X11Display.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>

#include <QGuiApplication>

#include <xcb/xcb.h>

namespace driftmark {

namespace {

constexpr std::uint32_t maxValues = 4096; ///< of a property; more windows than a user has

/// The message comes from the user, not from a program that wants to be in front.
constexpr std::uint32_t fromUser = 2;

/// The members of WM_HINTS.
constexpr std::size_t hintFlags = 0;
constexpr std::size_t hintInput = 1;
constexpr std::size_t hintCount = 9;
constexpr std::uint32_t hasInput = 1;

struct Free {
  void operator()(void* reply) const {
    std::free(reply); // NOLINT(cppcoreguidelines-no-malloc): allocated by xcb
  }
};

template <class Reply> std::unique_ptr<Reply, Free> owned(Reply* reply) {
  return std::unique_ptr<Reply, Free>(reply);
}

X11Display::Values valuesOf(const xcb_get_property_reply_t* reply) {
  if (reply == nullptr || reply->format != 32)
    return {};
  const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
  const auto bytes = static_cast<std::size_t>(xcb_get_property_value_length(reply));
  return {first, std::next(first, static_cast<std::ptrdiff_t>(bytes / sizeof(std::uint32_t)))};
}

} // namespace

std::optional<X11Display> X11Display::current() {
  auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr)
    return std::nullopt;
  return X11Display(*x11->connection());
}

X11Display::X11Display(xcb_connection_t& connection)
    : connection_(connection),
      root_(xcb_setup_roots_iterator(xcb_get_setup(&connection)).data->root) {}

QSize X11Display::size() const {
  const auto geometry =
      owned(xcb_get_geometry_reply(&connection_, xcb_get_geometry(&connection_, root_), nullptr));
  return geometry ? QSize(geometry->width, geometry->height) : QSize();
}

X11Display::Atom X11Display::atom(const std::string& name) const {
  const auto [known, isNew] = atoms_.try_emplace(name, XCB_ATOM_NONE);
  if (isNew) {
    const auto length = static_cast<std::uint16_t>(name.size());
    const auto cookie = xcb_intern_atom(&connection_, 0, length, name.c_str());
    if (const auto reply = owned(xcb_intern_atom_reply(&connection_, cookie, nullptr)))
      known->second = reply->atom;
  }
  return known->second;
}

X11Display::Values X11Display::values(Window window, const std::string& property) const {
  return values(std::vector{window}, property).front();
}

std::vector<X11Display::Values> X11Display::values(const std::vector<Window>& windows,
                                                   const std::string& property) const {
  const Atom name = atom(property);
  std::vector<xcb_get_property_cookie_t> cookies;
  std::ranges::transform(windows, std::back_inserter(cookies), [&](Window window) {
    return xcb_get_property(&connection_, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, maxValues);
  });
  std::vector<Values> all;
  std::ranges::transform(cookies, std::back_inserter(all), [&](const auto& cookie) {
    return valuesOf(owned(xcb_get_property_reply(&connection_, cookie, nullptr)).get());
  });
  return all;
}

void X11Display::setNumbers(Window window, const std::string& property, const Values& numbers) {
  xcb_change_property(&connection_, XCB_PROP_MODE_REPLACE, window, atom(property),
                      XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(numbers.size()),
                      numbers.data());
}

void X11Display::setAsksForFocus(Window window) {
  Values hints = values(window, "WM_HINTS");
  hints.resize(hintCount);
  hints[hintFlags] |= hasInput;
  hints[hintInput] = 0;
  xcb_change_property(&connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_HINTS,
                      XCB_ATOM_WM_HINTS, 32, hintCount, hints.data());
}

void X11Display::takeFocus(Window window, std::uint32_t time) {
  xcb_set_input_focus(&connection_, XCB_INPUT_FOCUS_PARENT, window, time);
}

void X11Display::activate(Window window) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = window;
  message.type = atom("_NET_ACTIVE_WINDOW");
  message.data.data32[0] = fromUser;
  message.data.data32[1] = XCB_CURRENT_TIME;
  xcb_send_event(&connection_, 0, root_,
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&message));
  xcb_flush(&connection_);
}

bool X11Display::isComposited() const {
  const auto cookie = xcb_get_selection_owner(&connection_, atom("_NET_WM_CM_S0"));
  const auto reply = owned(xcb_get_selection_owner_reply(&connection_, cookie, nullptr));
  return reply && reply->owner != XCB_WINDOW_NONE;
}

} // namespace driftmark
