#include "platform/linux/dialogs/LinuxDialogs.h"

#include "platform/linux/dialogs/AlertDialog.h"
#include "platform/linux/dialogs/FolderDialog.h"

namespace driftmark {

std::size_t LinuxDialogs::runModal(const Alert& alert) {
  return AlertDialog(alert).run();
}

std::optional<std::string> LinuxDialogs::chooseFolder(const FolderPanel& panel) {
  return FolderDialog(panel).run();
}

void LinuxDialogs::orderFrontAboutPanel(const std::string& credits) {
  aboutPanel_.showAboutPanel(bundle_.information("CFBundleName").value_or("Driftmark"),
                             bundle_.information("CFBundleShortVersionString").value_or(""),
                             bundle_.information("NSHumanReadableCopyright").value_or(""), credits);
}

} // namespace driftmark
