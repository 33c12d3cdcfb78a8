#pragma once

#include "uidriver/Window.h"

#include <string>

namespace icloud {

/// An open menu as it is drawn, a line for each entry: check mark, text, shortcut.
std::string menuText(const Window& menu);

} // namespace icloud
