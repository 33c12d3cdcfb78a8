#pragma once

#include "ports/Menu.h"

#include <string>
#include <vector>

namespace driftmark::gallery {

struct SampleMenu {
  std::string name;
  Menu menu;
};

/// Menus as the program builds them: idle, with transfers, with issues, and with names that are
/// hard to draw.
std::vector<SampleMenu> sampleMenus();

} // namespace driftmark::gallery
