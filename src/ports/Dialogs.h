#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace driftmark {

/// A modal question or message.
struct Alert {
  /// How many code points of the message are displayed: more than a question about a file of any
  /// name needs.
  static constexpr std::size_t maxDisplayedMessage = 300;

  std::string messageText;     ///< in bold, above; displayed as one line, which may be wrapped
  std::string informativeText; ///< may have several lines; never read as markup

  /// The button titles in their order; the first is the default. Without titles there is one button
  /// that only acknowledges, titled by the system.
  std::vector<std::string> buttons;

  bool operator==(const Alert&) const = default;
};

/// A question for a folder.
struct FolderPanel {
  std::string title;
  std::string message;   ///< above the folders
  std::string prompt;    ///< the title of the button that confirms
  std::string directory; ///< the folder that the panel opens at, as an absolute path

  /// What a list of places calls that folder, where the panel has such a list of its own.
  std::string directoryName = {};

  bool operator==(const FolderPanel&) const = default;
};

/// The windows in which this program asks its user. Main thread only. The main queue continues to
/// run while one of them is open.
class Dialogs {
public:
  virtual ~Dialogs() = default;

  /// Shows `alert` and returns the index of the chosen button. The alert is never taller than the
  /// screen, and its buttons are always visible: a longer informative text scrolls.
  /// Closing the alert in another way counts as its last button. No value: the application was
  /// asked to terminate, which closed the alert without an answer.
  virtual std::optional<std::size_t> runModal(const Alert& alert) = 0;

  /// Lets the user choose one existing folder. Returns its absolute path without a trailing slash;
  /// no value when nothing was chosen. Where `directory` does not exist, the panel opens at a
  /// folder of the system's choice.
  virtual std::optional<std::string> chooseFolder(const FolderPanel& panel) = 0;

  /// Shows the about panel: name, icon and version of the bundle, and `credits` below, which are
  /// lines of plain text in small letters. Returns at once; a panel that is already open is
  /// raised.
  virtual void orderFrontAboutPanel(const std::string& credits) = 0;
};

} // namespace driftmark
