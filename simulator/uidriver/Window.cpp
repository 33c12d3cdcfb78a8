#include "uidriver/Window.h"

#include <algorithm>
#include <stdexcept>

namespace icloud {
namespace {

template <typename Things>
const auto& named(const Things& things, const std::string& name, const auto& nameOf) {
  const auto found = std::ranges::find(things, name, nameOf);
  if (found == things.end())
    throw std::runtime_error("nothing in the window is called " + name);
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
    throw std::runtime_error("no button of the window is the default");
  return *found;
}

const Part& Window::part(const std::string& name) const {
  return named(parts, name, &Part::name);
}

const MenuEntry& Window::entry(const std::string& text) const {
  return named(entries, text, &MenuEntry::text);
}

} // namespace icloud
