#pragma once

#include "uidriver/UiDriver.h"

#include <string>
#include <vector>

namespace driftmark::road {

/// Waits for an alert with this message.
icloud::Window awaitAlert(icloud::UiDriver& driver, const std::string& message);

/// Waits for an alert and checks that it says just this, with these buttons from left to right, the
/// first being the default.
void expectAlert(icloud::UiDriver& driver, const std::string& message,
                 const std::string& informative, const std::vector<std::string>& buttons = {"OK"});

/// Waits until the status item stands in the menu bar, and checks that no alert is open: start-up
/// has come to its end.
void expectStarted(icloud::UiDriver& driver);

/// Opens the menu of the status item and chooses an entry of it.
void chooseInMenu(icloud::UiDriver& driver, const std::string& entry);

/// Asks the program to end as a user does, and waits until it has.
void quit(icloud::UiDriver& driver);

} // namespace driftmark::road
