// The entry point of the Linux frontend.

#include "app/Program.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/SystemRoot.h"
#include "platform/linux/looks/Look.h"
#include "platform/linux/runloop/Displays.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/PosixAdapters.h"

#include <iostream>
#include <variant>

#include <QApplication>
#include <QLoggingCategory>

namespace {

using namespace driftmark;

constexpr int badSystemRoot = 2;

} // namespace

int main(int argc, char* argv[]) {
  openMissingStandardDescriptors();
  // Users cannot fix what Qt warns about. QT_LOGGING_RULES shows the warnings.
  QLoggingCategory::setFilterRules(QStringLiteral("*.warning=false"));
  Displays displays(PosixEnvironment(), argc, argv);
  int count = static_cast<int>(displays.applicationArguments().size()) - 1;
  displays.willOpen();
  const QApplication application(count, displays.applicationArguments().data());
  const auto root = SystemRoot::of(PosixEnvironment());
  if (const auto* const error = std::get_if<SystemRoot::Error>(&root)) {
    std::cerr << "driftmark: " << error->message << '\n';
    return badSystemRoot;
  }
  Look::apply();
  LinuxPlatform platform(std::get<SystemRoot>(root));
  displays.opened(platform.ports().systemLog);
  return runProgram(platform.ports());
}
