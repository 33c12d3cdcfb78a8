#pragma once

#include "ports/Dialogs.h"

#include <optional>
#include <string>

#include <QFileDialog>

namespace driftmark {

/// The window in which a folder is chosen, with the message above the folders. Hidden folders are
/// reached by typing their path. A folder whose name is not UTF-8 cannot be shown: the panel opens
/// at the next one above it, which can be chosen instead. Nothing is changed in the folders, and
/// nothing is remembered: no settings, no history. The message is named `message`.
class FolderDialog final : public QFileDialog {
public:
  explicit FolderDialog(const FolderPanel& panel);

  /// Shows the panel until it is answered or closed, or the application ends. The chosen folder;
  /// the one that the panel opened at comes back as it was named.
  std::optional<std::string> run();

protected:
  void showEvent(QShowEvent* event) override;
  void accept() override;

private:
  void addMessage(const std::string& text);
  void arrange();
  void followTheName();
  QString folder() const;
  bool hasFolder() const;

  /// A widget of Qt's dialog.
  template <class Widget> Widget& part(const char* name) const;

  const std::string directory_; ///< the one that it opens at
};

} // namespace driftmark
