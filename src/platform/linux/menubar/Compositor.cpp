// Whether the display composes windows.

#include "platform/linux/menubar/Compositor.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include <QGuiApplication>

#include <xcb/xcb.h>

namespace driftmark {

namespace {

struct Free {
  void operator()(void* reply) const { std::free(reply); } // NOLINT(cppcoreguidelines-no-malloc)
};
template <class Reply> using ReplyOf = std::unique_ptr<Reply, Free>;

/// A compositor owns the selection of that name.
bool hasOwner(xcb_connection_t& display, const std::string& selection) {
  const ReplyOf<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
      &display,
      xcb_intern_atom(&display, 1, static_cast<std::uint16_t>(selection.size()), selection.c_str()),
      nullptr));
  if (!atom || atom->atom == XCB_ATOM_NONE)
    return false;
  const ReplyOf<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      &display, xcb_get_selection_owner(&display, atom->atom), nullptr));
  return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace

bool canBlendWindows() {
  if (QGuiApplication::platformName() != QLatin1String("xcb"))
    return true;
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return hasOwner(*x11->connection(), "_NET_WM_CM_S0");
}

} // namespace driftmark
