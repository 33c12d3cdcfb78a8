#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace driftmark {

/// A picture by its symbol name. Symbols are drawn in the colour of the text around them.
struct Symbol {
  std::string name;
  std::string description; ///< read aloud by a screen reader

  bool operator==(const Symbol&) const = default;
};

/// One line of a menu, as a plain value. Its texts are shown as they are: no markup, no mnemonics.
struct MenuItem {
  /// A number by which the controller finds an item again; 0 for none.
  using Tag = int;

  enum class Kind {
    command,  ///< can be chosen; without an action it is shown disabled
    label,    ///< shown disabled
    heading,  ///< a label for the rows below it
    separator ///< a line; the other members are unused
  };

  Kind kind = Kind::command;
  std::string title;
  /// How many bytes of the title are a name; none for all of them. The rest is a detail: where a
  /// title is too long, the name is shortened and the detail is not.
  std::optional<std::size_t> nameLength;
  std::optional<Symbol> symbol; ///< a symbol of an unknown name is not shown
  std::string toolTip;
  std::string keyEquivalent; ///< one letter, with the system's command modifier; empty for none
  bool isChecked = false;
  Tag tag = 0;
  std::function<void()> action; ///< called on the main thread when the item is chosen
};

using Menu = std::vector<MenuItem>;

} // namespace driftmark
