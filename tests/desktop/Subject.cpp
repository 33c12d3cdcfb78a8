// desktop_subject PATH: shows a file in the file manager, and runs until it is killed.

#include "platform/linux/SystemRoot.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/PosixAdapters.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <variant>

#include <QCoreApplication>

namespace {

using namespace driftmark;

constexpr int wrongUse = 2;

} // namespace

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  if (argc != 2)
    return wrongUse;
  LinuxMainQueue mainQueue;
  PosixChildProcesses childProcesses(
      mainQueue, std::get<SystemRoot>(SystemRoot::of(PosixEnvironment())).path());
  LinuxWorkspace(childProcesses).activateFileViewerSelecting(argv[1]);
  return QCoreApplication::exec();
}
