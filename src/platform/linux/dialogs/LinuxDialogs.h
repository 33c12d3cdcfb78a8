#pragma once

#include "platform/linux/dialogs/AboutPanel.h"
#include "ports/Bundle.h"
#include "ports/Dialogs.h"

namespace driftmark {

/// Alerts, the folder panel and the about panel as windows of this program. Needs a QApplication.
/// No window is created before it is shown.
class LinuxDialogs final : public Dialogs {
public:
  /// The bundle outlives this object.
  explicit LinuxDialogs(const Bundle& bundle) : bundle_(bundle) {}

  // AlertDialog.cpp
  std::optional<std::size_t> runModal(const Alert& alert) override;

  // FolderDialog.cpp
  std::optional<std::string> chooseFolder(const FolderPanel& panel) override;

  // AboutPanel.cpp
  void orderFrontAboutPanel(const std::string& credits) override;

private:
  const Bundle& bundle_;
  AboutPanel aboutPanel_;
};

} // namespace driftmark
