#include "platform/linux/dialogs/QtDialogs.h"

#include "platform/linux/dialogs/AlertDialog.h"
#include "platform/linux/dialogs/FolderDialog.h"

namespace driftmark {

std::size_t QtDialogs::runModal(const Alert& alert) {
  return AlertDialog(alert).run();
}

std::optional<std::string> QtDialogs::chooseFolder(const FolderPanel& panel) {
  return FolderDialog(panel).run();
}

void QtDialogs::orderFrontAboutPanel(const std::string& credits) {
  aboutPanel_.showAboutPanel(bundle_.information("CFBundleName").value_or("Driftmark"),
                             bundle_.information("CFBundleShortVersionString").value_or(""),
                             bundle_.information("NSHumanReadableCopyright").value_or(""), credits);
}

} // namespace driftmark
