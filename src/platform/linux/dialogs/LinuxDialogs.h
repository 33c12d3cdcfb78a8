#pragma once

#include "ports/Bundle.h"
#include "ports/Dialogs.h"

#include <memory>
#include <string>

namespace driftmark {

class AboutWindow;

/// The window with the name, the version and the credits of the application. Needs a QApplication.
/// Main thread only.
class AboutPanel {
public:
  AboutPanel();
  AboutPanel(const AboutPanel&) = delete;
  AboutPanel& operator=(const AboutPanel&) = delete;
  ~AboutPanel();

  /// Shows the panel and returns at once. An open panel is raised and shows these texts.
  /// They are plain text; an empty one takes no space.
  void showAboutPanel(const std::string& name, const std::string& version,
                      const std::string& copyright, const std::string& credits);

private:
  std::unique_ptr<AboutWindow> window_; ///< null before the first time
};

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
