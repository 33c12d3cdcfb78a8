// What a scenario's user does in the program, step by step.

#include "demo/UserSteps.h"

#include "common/DiskUsage.h"
#include "process/ChildProcess.h"
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

/// An open menu as it is drawn, a line for each entry: check mark, text, shortcut.
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

const MenuEntry& firstMatchingEntry(const Window& menu, const std::string& pattern) {
  const auto found =
      std::find_if(menu.entries.begin(), menu.entries.end(), [&](const MenuEntry& entry) {
        return !entry.isSeparator && matchesGlob(pattern, entry.text);
      });
  if (found == menu.entries.end())
    throw std::runtime_error("the menu has no such entry:\n" + menuText(menu));
  return *found;
}

bool hasMatchingText(const Window& window, const std::string& pattern) {
  return std::any_of(window.texts.begin(), window.texts.end(),
                     [&](const std::string& text) { return matchesGlob(pattern, text); });
}

} // namespace

UserSteps::UserSteps(UiDriver driver, UserContext context, Report report, Report reportMenu)
    : driver_(std::move(driver)), context_(std::move(context)), report_(std::move(report)),
      reportMenu_(std::move(reportMenu)) {}

Window UserSteps::openMenu() {
  const auto windows = driver_.windows();
  const auto menu = std::find_if(windows.begin(), windows.end(), isMenu);
  if (menu == windows.end())
    throw std::runtime_error("no menu is open");
  return *menu;
}

void UserSteps::operator()(const OpenMenu& /*step*/) {
  driver_.click(strip);
  driver_.awaitMenu();
}

void UserSteps::operator()(const CloseMenu& /*step*/) {
  openMenu();
  driver_.key("Escape");
  driver_.awaitAbsence(isMenu);
}

void UserSteps::operator()(const ChooseEntry& step) {
  driver_.choose(firstMatchingEntry(openMenu(), step.pattern).text);
}

void UserSteps::operator()(const FindEntry& step) {
  const Window menu = openMenu();
  const MenuEntry& entry = firstMatchingEntry(menu, step.pattern);
  if (step.checked && *step.checked != entry.isChecked)
    throw std::runtime_error("the entry \"" + entry.text + "\" is " +
                             (entry.isChecked ? "checked" : "not checked"));
}

void UserSteps::operator()(const SeeText& step) {
  driver_.awaitWindow([&](const Window& window) { return hasMatchingText(window, step.pattern); });
}

void UserSteps::operator()(const PressButton& step) {
  driver_.press(step.title);
}

void UserSteps::operator()(const PressKey& step) {
  driver_.key(step.name);
}

void UserSteps::operator()(const PickFolder& step) {
  driver_.pickFolder(context_.drive / step.path);
}

void UserSteps::operator()(const OpenFile& step) {
  ChildProcess brctl({context_.brctl, {"download", context_.drive / step.path}, {}});
  if (const int status = brctl.wait(); status != 0)
    throw std::runtime_error("the file cannot be opened: brctl ended with " + describeEnd(status));
}

void UserSteps::operator()(const MeasureDisk& step) {
  const std::uint64_t bytes = bytesOnDisk(context_.drive / step.path);
  report_("\"" + step.path + "\" takes up " + std::to_string(bytes) + " bytes on this disk");
  if (bytes < step.least)
    throw std::runtime_error("that is too little");
  if (bytes > step.most)
    throw std::runtime_error("that is too much");
}

void UserSteps::operator()(const TakeScreenshot& step) {
  std::array<char, 16> number{};
  std::snprintf(number.data(), number.size(), "%02d-", ++screenshotCount_);
  driver_.screenshot(context_.screenshots / (number.data() + step.name + ".png"));
}

void UserSteps::operator()(const ReadMenu& /*step*/) {
  reportMenu_(menuText(openMenu()));
}

void UserSteps::operator()(const ReadStrip& /*step*/) {
  const Window window = driver_.awaitWindow([](const Window& candidate) {
    return std::any_of(candidate.widgets.begin(), candidate.widgets.end(),
                       [](const Widget& widget) { return widget.name == strip; });
  });
  const Widget& item = window.widget(strip);
  report_("the menu bar says: " + item.accessibleName);
  if (item.toolTip != item.accessibleName)
    throw std::runtime_error("the tooltip says something else: " + item.toolTip);
}

void UserSteps::operator()(const AwaitExit& /*step*/) {
  driver_.awaitEnd();
}

} // namespace icloud
