#pragma once

#include "common/Descriptor.h"
#include "desktop/Session.h"

#include <string>

namespace driftmark::test {

/// Folders that the programs of a session cannot open before the test releases them: those inside
/// another folder whose names begin with a prefix.
class HeldFolders {
public:
  /// Affects programs that are started later. Throws std::system_error.
  HeldFolders(Session& session, const std::string& prefix);

  /// Waits until a program tries to open one of the folders. Throws TimedOut.
  void awaitOpening();

  /// The same. False when `program` ends first.
  bool awaitOpeningOrExit(const icloud::ChildProcess& program);

  /// Lets one program that waits, or the next one, open its folder.
  void releaseOne();

private:
  void takeOpening();

  icloud::Descriptor reached_;
  icloud::Descriptor go_;
};

} // namespace driftmark::test
