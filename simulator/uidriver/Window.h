#pragma once

#include <string>
#include <vector>

namespace icloud {

/// A rectangle on the screen, in points from the screen's top left corner.
struct Rect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

struct Button {
  std::string title;
  bool isDefault = false; ///< Return presses it
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

/// A widget that has an object name.
struct Widget {
  std::string name;
  std::string className;
  Rect geometry;
  bool isEnabled = true;
  std::string toolTip;
  std::string accessibleName;
};

/// A visible top-level window at the time of the request.
struct Window {
  enum class Kind { alert, dialog, menu, tooltip, other };

  int number = 0; ///< the same for as long as the window exists
  std::string className;
  Kind kind = Kind::other;
  std::string title;
  Rect geometry;
  bool isModal = false;
  bool isActive = false;
  std::vector<std::string> texts; ///< from the top left to the bottom right, as the buttons
  std::vector<Button> buttons;
  std::vector<Widget> widgets;    ///< the window itself first, when it has an object name
  std::vector<MenuEntry> entries; ///< of a menu

  std::vector<std::string> buttonTitles() const;

  /// The button that Return presses. Throws std::runtime_error when there is none.
  const Button& defaultButton() const;

  /// The widget with that object name. Throws std::runtime_error when there is none.
  const Widget& widget(const std::string& name) const;

  /// The entry with that text. Throws std::runtime_error when there is none.
  const MenuEntry& entry(const std::string& text) const;
};

} // namespace icloud
