#pragma once

#include "uidriver/UiDriver.h"

#include <string>
#include <vector>

namespace driftmark::test {

/// Waits for an alert with this message.
icloud::Window awaitAlert(icloud::UiDriver& driver, const std::string& message);

/// Waits for an alert. Checks that it has exactly these two texts and these buttons from left to
/// right, the first being the default.
void expectAlert(icloud::UiDriver& driver, const std::string& message,
                 const std::string& informative, const std::vector<std::string>& buttons = {"OK"});

/// Waits until the status item is visible and checks that no alert is open: the program has
/// started.
void expectStarted(icloud::UiDriver& driver);

/// Opens the menu of the status item and chooses one of its entries.
void chooseInMenu(icloud::UiDriver& driver, const std::string& entry);

/// Quits the program by its menu and waits until it has ended.
void quit(icloud::UiDriver& driver);

} // namespace driftmark::test
