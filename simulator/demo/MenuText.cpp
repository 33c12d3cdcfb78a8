#include "demo/MenuText.h"

namespace icloud {

std::string menuText(const Window& menu) {
  std::string text;
  for (const MenuEntry& entry : menu.entries) {
    if (entry.isSeparator) {
      text += "  ────────\n";
      continue;
    }
    text += (entry.isChecked ? "✓ " : "  ") + entry.text;
    if (!entry.shortcut.empty())
      text += "    " + entry.shortcut;
    text += '\n';
  }
  return text;
}

} // namespace icloud
