#include "demo/UserSteps.h"

#include "common/DiskUsage.h"
#include "demo/MenuText.h"
#include "process/Launch.h"
#include "scenario/Glob.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>

namespace icloud {
namespace {

constexpr const char* strip = "MenuBarStrip";

bool isMenu(const Window& window) {
  return window.kind == Window::Kind::menu;
}

/// The first entry of a menu that matches.
const MenuEntry& matching(const Window& menu, const std::string& pattern) {
  const auto found =
      std::find_if(menu.entries.begin(), menu.entries.end(), [&](const MenuEntry& entry) {
        return !entry.isSeparator && matchesGlob(pattern, entry.text);
      });
  if (found == menu.entries.end())
    throw std::runtime_error("the menu has no such entry:\n" + menuText(menu));
  return *found;
}

bool shows(const Window& window, const std::string& pattern) {
  return std::any_of(window.texts.begin(), window.texts.end(),
                     [&](const std::string& text) { return matchesGlob(pattern, text); });
}

} // namespace

UserSteps::UserSteps(UiDriver user, Surroundings surroundings, Tell tell, Tell tellMenu)
    : user_(std::move(user)), surroundings_(std::move(surroundings)), tell_(std::move(tell)),
      tellMenu_(std::move(tellMenu)) {}

Window UserSteps::openMenu() {
  const auto windows = user_.windows();
  const auto menu = std::find_if(windows.begin(), windows.end(), isMenu);
  if (menu == windows.end())
    throw std::runtime_error("no menu is open");
  return *menu;
}

void UserSteps::awaitNoMenu() {
  user_.awaitAbsence(isMenu);
}

void UserSteps::operator()(const OpenMenu& /*act*/) {
  user_.click(strip);
  user_.awaitMenu();
}

void UserSteps::operator()(const CloseMenu& /*act*/) {
  openMenu();
  user_.key("Escape");
  awaitNoMenu();
}

void UserSteps::operator()(const ChooseEntry& act) {
  const std::string text = matching(openMenu(), act.pattern).text;
  user_.choose(text);
}

void UserSteps::operator()(const FindEntry& act) {
  const Window menu = openMenu();
  const MenuEntry& entry = matching(menu, act.pattern);
  if (act.checked && *act.checked != entry.isChecked)
    throw std::runtime_error("the entry \"" + entry.text + "\" is " +
                             (entry.isChecked ? "checked" : "not checked"));
}

void UserSteps::operator()(const SeeText& act) {
  user_.awaitWindow([&](const Window& window) { return shows(window, act.pattern); });
}

void UserSteps::operator()(const PressButton& act) {
  user_.press(act.title);
}

void UserSteps::operator()(const PressKey& act) {
  user_.key(act.name);
}

void UserSteps::operator()(const PickFolder& act) {
  user_.pickFolder(surroundings_.drive / act.path);
}

void UserSteps::operator()(const OpenFile& act) {
  ChildProcess brctl({surroundings_.brctl, {"download", surroundings_.drive / act.path}, {}});
  if (const int status = brctl.wait(); status != 0)
    throw std::runtime_error("the file cannot be opened: brctl ended with " + describeEnd(status));
}

void UserSteps::operator()(const MeasureDisk& act) {
  const std::uint64_t bytes = bytesOnDisk(surroundings_.drive / act.path);
  tell_("\"" + act.path + "\" takes up " + std::to_string(bytes) + " bytes on this disk");
  if (bytes < act.least)
    throw std::runtime_error("that is too little");
  if (bytes > act.most)
    throw std::runtime_error("that is too much");
}

void UserSteps::operator()(const TakePicture& act) {
  std::array<char, 16> number{};
  std::snprintf(number.data(), number.size(), "%02d-", ++pictureCount_);
  user_.screenshot(surroundings_.pictures / (number.data() + act.name + ".png"));
}

void UserSteps::operator()(const ReadMenu& /*act*/) {
  tellMenu_(menuText(openMenu()));
}

void UserSteps::operator()(const ReadStrip& /*act*/) {
  const Window window = user_.awaitWindow([](const Window& candidate) {
    return std::any_of(candidate.parts.begin(), candidate.parts.end(),
                       [](const Part& part) { return part.name == strip; });
  });
  const Part& item = window.part(strip);
  tell_("the menu bar says: " + item.accessibleName);
  if (item.toolTip != item.accessibleName)
    throw std::runtime_error("the tooltip says something else: " + item.toolTip);
}

void UserSteps::operator()(const AwaitExit& /*act*/) {
  user_.awaitEnd();
}

} // namespace icloud
