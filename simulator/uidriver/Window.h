#pragma once

#include <string>
#include <vector>

namespace icloud {

/// A place on the screen, in points from its top left corner.
struct Place {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

struct Button {
  std::string title;
  bool isDefault = false; ///< the one that Return presses
  bool isEnabled = true;
  bool isChecked = false;
};

struct MenuEntry {
  std::string text;
  bool isEnabled = true;
  bool isChecked = false;
  bool isSeparator = false;
  bool hasSubmenu = false;
  std::string shortcut; ///< "Ctrl+Q"; empty for none
  std::string toolTip;
};

/// A part of a window that has a name in the program.
struct Part {
  std::string name;
  std::string className;
  Place place;
  bool isEnabled = true;
  std::string toolTip;
  std::string accessibleName;
};

/// A visible top-level window, as it was when it was looked at.
struct Window {
  enum class Kind { alert, dialog, menu, tooltip, other };

  int number = 0; ///< the same for as long as the window exists
  std::string className;
  Kind kind = Kind::other;
  std::string title;
  Place place;
  bool isModal = false;
  bool isActive = false;
  std::vector<std::string> texts; ///< from the top left to the bottom right, as the buttons
  std::vector<Button> buttons;
  std::vector<Part> parts;
  std::vector<MenuEntry> entries; ///< of a menu

  std::vector<std::string> buttonTitles() const;

  /// The button that Return presses. Throws std::runtime_error when there is none.
  const Button& defaultButton() const;

  /// The part of that name. Throws std::runtime_error when there is none.
  const Part& part(const std::string& name) const;

  /// The entry of that text. Throws std::runtime_error when there is none.
  const MenuEntry& entry(const std::string& text) const;
};

} // namespace icloud
