#pragma once

#include <string>

namespace driftmark {

/// The desktop around this program. Main thread only; what fails, fails silently.
class Workspace {
public:
  virtual ~Workspace() = default;

  /// Shows the item at `path` selected in a window of the file manager. It need not exist any more.
  virtual void activateFileViewerSelecting(const std::string& path) = 0;

  /// Opens the item at `path` with what the user has chosen for its kind.
  virtual void open(const std::string& path) = 0;
};

} // namespace driftmark
