#pragma once

#include "ports/ChildProcesses.h"
#include "ports/Workspace.h"

namespace driftmark {

/// The desktop by its standards: the file manager shows items, asked over the session bus, and
/// `xdg-open` opens them.
class LinuxWorkspace final : public Workspace {
public:
  /// The children outlive this object.
  explicit LinuxWorkspace(ChildProcesses& childProcesses) : childProcesses_(childProcesses) {}

  /// Opens the folder that holds the item when no file manager answers.
  void activateFileViewerSelecting(const std::string& path) override;

  void open(const std::string& path) override;

private:
  ChildProcesses& childProcesses_;
};

} // namespace driftmark
