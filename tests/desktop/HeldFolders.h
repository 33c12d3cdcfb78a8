#pragma once

#include "common/Descriptor.h"
#include "desktop/Session.h"

#include <string>

namespace driftmark::test {

/// Folders that the programs of a session cannot walk into before the test lets them: those inside
/// another one whose name begins so.
class HeldFolders {
public:
  /// To be made before the program is started. Throws std::system_error.
  HeldFolders(Session& session, const std::string& prefix);

  /// Waits until somebody stands before one of the folders. Throws std::runtime_error when nobody
  /// comes.
  void awaitVisitor();

  /// The same, unless `program` ends before; whether somebody came.
  bool awaitVisitorOrEnd(const icloud::ChildProcess& program);

  /// Lets one of those who stand there, or the next one, go on.
  void letOneIn();

private:
  void takeVisitor();

  icloud::Descriptor reached_;
  icloud::Descriptor go_;
};

} // namespace driftmark::test
