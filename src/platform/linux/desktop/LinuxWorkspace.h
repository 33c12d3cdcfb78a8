#pragma once

#include "ports/ChildProcesses.h"
#include "ports/Workspace.h"

namespace driftmark {

/// The desktop as its standards describe it: the file manager is asked over the session bus, and
/// `xdg-open` opens what else there is to open.
class LinuxWorkspace final : public Workspace {
public:
  /// The children outlive this object.
  explicit LinuxWorkspace(ChildProcesses& childProcesses) : childProcesses_(childProcesses) {}

  /// Where no file manager answers, the folder that holds the item is opened.
  void activateFileViewerSelecting(const std::string& path) override;

  void open(const std::string& path) override;

private:
  ChildProcesses& childProcesses_;
};

} // namespace driftmark
