#pragma once

#include <mutex>
#include <string>

namespace driftmark {

/// The folder for this user's temporary files, which nobody else can enter: `driftmark-UID` in
/// `TMPDIR`, or in /tmp where that is not an absolute path. When something else has that name, a
/// new folder beside it. Any thread.
class TemporaryDirectory {
public:
  /// The path with a slash at its end, the same as long as the folder stays private. The folder is
  /// there when this returns, unless none can be made at all.
  std::string path();

private:
  std::mutex mutex_;
  std::string path_; ///< empty until first asked for
};

} // namespace driftmark
