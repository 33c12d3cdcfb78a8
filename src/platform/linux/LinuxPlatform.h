#pragma once

#include "platform/Platform.h"
#include "platform/linux/LinuxBackgroundQueue.h"
#include "platform/linux/LinuxSystemLog.h"
#include "platform/linux/LinuxText.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SystemRoot.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/ProcessEnvironment.h"
#include "platform/posix/SystemClock.h"

namespace driftmark {

/// All adapters of this front. Lives on the main thread, which runs a QCoreApplication. Destroying
/// it ends all children, waits for background work and drops what waits on the queues; objects of
/// the core that are still held by such work go then.
class LinuxPlatform {
public:
  /// Throws std::system_error when the system has no descriptors left.
  explicit LinuxPlatform(const SystemRoot& root);
  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;
  ~LinuxPlatform();

  /// The ports, to be used no longer than this object lives.
  Platform ports();

private:
  SystemClock clock_;
  LinuxSystemLog systemLog_;
  PosixFileSystem fileSystem_;
  ProcessEnvironment environment_;
  LinuxText text_;
  QtMainQueue mainQueue_;
  PosixChildProcesses childProcesses_;
  LinuxBackgroundQueue backgroundQueue_;
};

} // namespace driftmark
