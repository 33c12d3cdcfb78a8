#include "road/AtTheScreen.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::road {

using icloud::Button;
using icloud::Person;
using icloud::Window;

namespace {

constexpr const char* statusItem = "MenuBarStrip";

bool isStatusItem(const Window& window) {
  return std::any_of(window.parts.begin(), window.parts.end(),
                     [](const icloud::Part& part) { return part.name == statusItem; });
}

} // namespace

Window awaitAlert(Person& person, const std::string& message) {
  return person.awaitWindow([&](const Window& window) {
    return window.kind == Window::Kind::alert && !window.texts.empty() &&
           window.texts.front() == message;
  });
}

void expectAlert(Person& person, const std::string& message, const std::string& informative,
                 const std::vector<std::string>& buttons) {
  const Window alert = person.awaitAlert();
  EXPECT_THAT(alert.texts, testing::ElementsAre(message, informative));
  EXPECT_EQ(alert.buttonTitles(), buttons);
  for (const Button& button : alert.buttons)
    EXPECT_EQ(button.isDefault, &button == &alert.buttons.front()) << button.title;
}

void expectStarted(Person& person) {
  person.awaitWindow(isStatusItem);
  for (const Window& window : person.windows())
    EXPECT_NE(window.kind, Window::Kind::alert) << testing::PrintToString(window.texts);
}

void chooseInMenu(Person& person, const std::string& entry) {
  person.awaitWindow(isStatusItem);
  person.click(statusItem);
  person.awaitMenu();
  person.choose(entry);
}

void quit(Person& person) {
  chooseInMenu(person, "Quit Driftmark");
  person.awaitEnd();
}

} // namespace driftmark::road
