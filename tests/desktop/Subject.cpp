// One adapter in a process of its own: desktop_subject OPERATION PATH.

#include "platform/linux/SystemRoot.h"
#include "platform/linux/desktop/LinuxLoginItem.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/PosixAdapters.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <iostream>
#include <string>
#include <variant>

#include <QCoreApplication>

namespace {

using namespace driftmark;

constexpr int failed = 1;
constexpr int wrongUse = 2;

/// Until the process is ended, so that it can take the desktop's answer.
int runWorkspace(const std::string& operation, const std::string& path) {
  LinuxMainQueue mainQueue;
  PosixChildProcesses childProcesses(
      mainQueue, std::get<SystemRoot>(SystemRoot::of(PosixEnvironment())).path());
  LinuxWorkspace workspace(childProcesses);
  if (operation == "reveal")
    workspace.activateFileViewerSelecting(path);
  else
    workspace.open(path);
  return QCoreApplication::exec();
}

int runLoginItem(const std::string& operation, const std::string& executable) {
  LinuxLoginItem loginItem(executable);
  if (operation == "login-status") {
    std::cerr << (loginItem.status() == LoginItem::Status::enabled ? "enabled" : "not registered");
    return 0;
  }
  const auto error =
      operation == "login-register" ? loginItem.registerItem() : loginItem.unregisterItem();
  if (error)
    std::cerr << error->description;
  return error ? failed : 0;
}

} // namespace

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  if (argc != 3)
    return wrongUse;
  const std::string operation = argv[1];
  return operation.starts_with("login-") ? runLoginItem(operation, argv[2])
                                         : runWorkspace(operation, argv[2]);
}
