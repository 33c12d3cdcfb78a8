#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace driftmark {

/// A modal question or message.
struct Alert {
  std::string messageText;     ///< in bold, above
  std::string informativeText; ///< may have several lines; never read as markup

  /// The titles in their order, the first being the default. Without any there is one button that
  /// only acknowledges, titled by the system.
  std::vector<std::string> buttons;

  bool operator==(const Alert&) const = default;
};

/// A question for a folder.
struct FolderPanel {
  std::string title;
  std::string message;   ///< above the folders
  std::string prompt;    ///< the button that confirms
  std::string directory; ///< the folder that it opens at, as an absolute path

  bool operator==(const FolderPanel&) const = default;
};

/// What this program asks its user. Main thread only.
class Dialogs {
public:
  virtual ~Dialogs() = default;

  /// The answer of an alert that nobody answered.
  static constexpr std::size_t unanswered = static_cast<std::size_t>(-1);

  /// Shows `alert` and returns the index of the chosen button. Closing the alert in another way
  /// counts as the last button. While it is open, what comes to the main queue runs; where the
  /// application is asked to terminate meanwhile, it closes `unanswered`.
  virtual std::size_t runModal(const Alert& alert) = 0;

  /// Lets the user choose one folder, of those that there are, and returns its absolute path
  /// without a trailing slash; no value when nothing was chosen. Only folders can be chosen, any of
  /// them. It lets the main queue go on as an alert does. Where there is no folder `directory`, the
  /// panel opens at one of the system's choosing.
  virtual std::optional<std::string> chooseFolder(const FolderPanel& panel) = 0;

  /// Shows the panel that says what this application is, with its name, icon and version as the
  /// bundle gives them, and `credits` below: lines of plain text in small letters. Returns at once;
  /// a panel that is open already comes to the front.
  virtual void orderFrontAboutPanel(const std::string& credits) = 0;
};

} // namespace driftmark
