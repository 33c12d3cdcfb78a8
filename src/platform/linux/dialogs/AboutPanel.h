#pragma once

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

} // namespace driftmark
