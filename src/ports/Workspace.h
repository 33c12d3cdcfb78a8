#pragma once

#include <string>

namespace driftmark {

/// The file manager and the applications that open files. Main thread only; failures are silent.
class Workspace {
public:
  virtual ~Workspace() = default;

  /// Shows the item at `path`, selected, in a window of the file manager. It need not exist any
  /// more.
  virtual void activateFileViewerSelecting(const std::string& path) = 0;

  /// Opens the item at `path` with the application that the user chose for its kind.
  virtual void open(const std::string& path) = 0;
};

} // namespace driftmark
