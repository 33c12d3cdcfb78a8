// Whether the display composes windows.

#include "platform/linux/menubar/Compositor.h"

#include "platform/linux/menubar/X11Display.h"

namespace driftmark {

bool canBlendWindows() {
  const auto display = X11Display::current();
  return !display || display->isComposited();
}

} // namespace driftmark
