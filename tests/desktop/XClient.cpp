// How a test takes part in an X display.

#include "desktop/XClient.h"

#include "harness/Waiting.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <xcb/xcb.h>

namespace driftmark::test {

namespace {

struct Free {
  void operator()(void* reply) const {
    std::free(reply); // NOLINT(cppcoreguidelines-no-malloc): allocated by xcb
  }
};

template <class Reply> std::unique_ptr<Reply, Free> owned(Reply* reply) {
  return std::unique_ptr<Reply, Free>(reply);
}

constexpr std::uint32_t maxValues = 1000; ///< of a property

constexpr std::uint32_t ownEvents = XCB_EVENT_MASK_KEY_PRESS;

} // namespace

void XClient::Disconnect::operator()(xcb_connection_t* connection) const {
  xcb_disconnect(connection);
}

XClient::XClient(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
  if (xcb_connection_has_error(connection_.get()) != 0)
    throw std::runtime_error("the display " + display + " does not answer");
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
  watch(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
}

XClient::Window XClient::await(const std::string& title) {
  std::vector<Window> windows;
  await("the window " + title, [&] {
    windows = shown(title);
    return !windows.empty();
  });
  return windows.front();
}

std::vector<XClient::Window> XClient::shown(const std::string& title) {
  std::vector<Window> windows = candidates();
  std::erase_if(windows, [&](Window window) {
    watch(window);
    return this->title(window) != title || !isShown(window);
  });
  return windows;
}

XClient::Window XClient::open(const std::string& title, const QRect& place) {
  const Window window = add(title, place);
  xcb_map_window(connection_.get(), window);
  await("the focus of " + title, [&] { return focus() == window; });
  return window;
}

XClient::Window XClient::openPanel(const std::string& title, const QRect& place) {
  const Window window = add(title, place);
  setProperty(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {atom("_NET_WM_WINDOW_TYPE_DOCK")});
  const auto lower = static_cast<std::uint32_t>(place.bottom() + 1);
  const auto right = static_cast<std::uint32_t>(place.right());
  setProperty(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL,
              {0, 0, lower, 0, 0, 0, 0, 0, static_cast<std::uint32_t>(place.left()), right, 0, 0});
  xcb_map_window(connection_.get(), window);
  return await(title);
}

XClient::Window XClient::add(const std::string& title, const QRect& place) {
  const Window window = xcb_generate_id(connection_.get());
  xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window, root_,
                    static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()),
                    static_cast<std::uint16_t>(place.width()),
                    static_cast<std::uint16_t>(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
                      XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(title.size()), title.data());
  keys_[window] = 0;
  watch(window);
  return window;
}

void XClient::close(Window window) {
  xcb_destroy_window(connection_.get(), window);
  xcb_flush(connection_.get());
}

void XClient::ask(Window window, const std::string& message, const Values& data) {
  send(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, window,
       message, data);
}

void XClient::askToClose(Window window) {
  send(window, XCB_EVENT_MASK_NO_EVENT, window, "WM_PROTOCOLS", {atom("WM_DELETE_WINDOW")});
}

void XClient::send(Window receiver, std::uint32_t mask, Window window, const std::string& message,
                   const Values& data) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom(message);
  std::ranges::copy(data, std::begin(event.data.data32));
  xcb_send_event(connection_.get(), 0, receiver, mask, reinterpret_cast<const char*>(&event));
  xcb_flush(connection_.get());
}

std::uint32_t XClient::atom(const std::string& name) {
  const auto cookie =
      xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  return owned(xcb_intern_atom_reply(connection_.get(), cookie, nullptr))->atom;
}

XClient::Values XClient::property(Window window, const std::string& name) {
  const auto cookie = xcb_get_property(connection_.get(), 0, window, atom(name),
                                       XCB_GET_PROPERTY_TYPE_ANY, 0, maxValues);
  const auto reply = owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply || reply->format != 32)
    return {};
  const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
  const auto bytes = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
  return {first, first + bytes / sizeof(std::uint32_t)};
}

std::string XClient::firstAtom(Window window, const std::string& name) {
  const Values atoms = property(window, name);
  if (atoms.empty())
    return {};
  const auto cookie = xcb_get_atom_name(connection_.get(), atoms.front());
  const auto reply = owned(xcb_get_atom_name_reply(connection_.get(), cookie, nullptr));
  return {xcb_get_atom_name_name(reply.get()),
          static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

QRect XClient::place(Window window) {
  const auto size = owned(
      xcb_get_geometry_reply(connection_.get(), xcb_get_geometry(connection_.get(), window), {}));
  const auto corner = owned(xcb_translate_coordinates_reply(
      connection_.get(), xcb_translate_coordinates(connection_.get(), window, root_, 0, 0), {}));
  return size && corner ? QRect(corner->dst_x, corner->dst_y, size->width, size->height) : QRect();
}

int XClient::depth(Window window) {
  const auto geometry = owned(
      xcb_get_geometry_reply(connection_.get(), xcb_get_geometry(connection_.get(), window), {}));
  return geometry ? geometry->depth : 0;
}

bool XClient::isShown(Window window) {
  const auto attributes = owned(xcb_get_window_attributes_reply(
      connection_.get(), xcb_get_window_attributes(connection_.get(), window), nullptr));
  return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool XClient::isListed(Window window) {
  return std::ranges::count(candidates(), window) > 0;
}

XClient::Window XClient::focus() {
  return owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()),
                                         nullptr))
      ->focus;
}

int XClient::keys(Window window) const {
  return keys_.at(window);
}

void XClient::await(const std::string& event, const std::function<bool()>& condition) {
  while (!condition()) {
    // Events that came together with replies wait in a queue.
    if (readEvents())
      continue;
    xcb_flush(connection_.get());
    awaitReadable(xcb_get_file_descriptor(connection_.get()), event);
  }
}

/// Whether there were any.
bool XClient::readEvents() {
  bool wereAny = false;
  while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
    wereAny = true;
    if (event->response_type == XCB_KEY_PRESS)
      ++keys_[reinterpret_cast<const xcb_key_press_event_t*>(event.get())->event];
  }
  if (xcb_connection_has_error(connection_.get()) != 0)
    throw std::runtime_error("the display was closed");
  return wereAny;
}

void XClient::watch(Window window, std::uint32_t moreEvents) {
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                             XCB_EVENT_MASK_FOCUS_CHANGE | moreEvents |
                             (keys_.contains(window) ? ownEvents : 0);
  xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
}

void XClient::setProperty(Window window, const std::string& name, std::uint32_t type,
                          const Values& values) {
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, atom(name), type, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
}

/// The windows that the window manager lists; without such a list, those of the display and what
/// these frame.
std::vector<XClient::Window> XClient::candidates() {
  std::vector<Window> windows = property(root_, "_NET_CLIENT_LIST");
  if (!windows.empty())
    return windows;
  for (const Window outer : children(root_)) {
    const auto inner = children(outer);
    windows.push_back(outer);
    windows.insert(windows.end(), inner.begin(), inner.end());
  }
  return windows;
}

std::vector<XClient::Window> XClient::children(Window window) {
  const auto tree = owned(
      xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), window), nullptr));
  if (!tree)
    return {};
  const auto* const first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

std::string XClient::title(Window window) {
  for (const std::uint32_t name : {atom("_NET_WM_NAME"), std::uint32_t{XCB_ATOM_WM_NAME}}) {
    const auto cookie = xcb_get_property(connection_.get(), 0, window, name,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, maxValues);
    const auto reply = owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    if (const int length = reply ? xcb_get_property_value_length(reply.get()) : 0; length > 0)
      return {static_cast<const char*>(xcb_get_property_value(reply.get())),
              static_cast<std::size_t>(length)};
  }
  return {};
}

} // namespace driftmark::test
