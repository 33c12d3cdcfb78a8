// How a user opens the menu and reads alerts, through the UI driver.

#include "harness/ui/ProgramUi.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {

using icloud::Button;
using icloud::UiDriver;
using icloud::Window;

namespace {

constexpr const char* statusItem = "MenuBarStrip";

bool isStatusItem(const Window& window) {
  return std::any_of(window.widgets.begin(), window.widgets.end(),
                     [](const icloud::Widget& widget) { return widget.name == statusItem; });
}

} // namespace

Window awaitAlert(UiDriver& driver, const std::string& message) {
  return driver.awaitWindow([&](const Window& window) {
    return window.kind == Window::Kind::alert && !window.texts.empty() &&
           window.texts.front() == message;
  });
}

void expectAlert(UiDriver& driver, const std::string& message, const std::string& informative,
                 const std::vector<std::string>& buttons) {
  const Window alert = driver.awaitAlert();
  EXPECT_THAT(alert.texts, testing::ElementsAre(message, informative));
  EXPECT_EQ(alert.buttonTitles(), buttons);
  for (const Button& button : alert.buttons)
    EXPECT_EQ(button.isDefault, &button == &alert.buttons.front()) << button.title;
}

void expectStarted(UiDriver& driver) {
  driver.awaitWindow(isStatusItem);
  for (const Window& window : driver.windows())
    EXPECT_NE(window.kind, Window::Kind::alert) << testing::PrintToString(window.texts);
}

void chooseInMenu(UiDriver& driver, const std::string& entry) {
  driver.awaitWindow(isStatusItem);
  driver.click(statusItem);
  driver.awaitMenu();
  driver.choose(entry);
}

void quit(UiDriver& driver) {
  chooseInMenu(driver, "Quit Driftmark");
  driver.awaitEnd();
}

} // namespace driftmark::test
