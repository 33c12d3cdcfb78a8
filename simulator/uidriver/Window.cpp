// What the parts of a window are, by name.

#include "uidriver/Window.h"

#include <algorithm>
#include <stdexcept>

namespace icloud {
namespace {

template <typename Items>
const auto& named(const Items& items, const std::string& name, const auto& nameOf) {
  const auto found = std::ranges::find(items, name, nameOf);
  if (found == items.end())
    throw std::runtime_error("the window has no part named " + name);
  return *found;
}

} // namespace

std::vector<std::string> Window::buttonTitles() const {
  std::vector<std::string> titles;
  for (const Button& button : buttons)
    titles.push_back(button.title);
  return titles;
}

const Button& Window::defaultButton() const {
  const auto found = std::ranges::find(buttons, true, &Button::isDefault);
  if (found == buttons.end())
    throw std::runtime_error("the window has no default button");
  return *found;
}

const Widget& Window::widget(const std::string& name) const {
  return named(widgets, name, &Widget::name);
}

const MenuEntry& Window::entry(const std::string& text) const {
  return named(entries, text, &MenuEntry::text);
}

} // namespace icloud
