// The entry point of the Linux frontend.

#include "app/Program.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/SystemRoot.h"
#include "platform/linux/looks/Look.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/PosixAdapters.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string>
#include <variant>
#include <vector>

#include <QApplication>
#include <QLoggingCategory>

namespace {

using namespace driftmark;

constexpr int badSystemRoot = 2;

/// Whether the environment names a display or a Qt platform.
bool hasDisplay() {
  const PosixEnvironment environment;
  constexpr std::array names{"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"};
  return std::ranges::any_of(
      names, [&](const char* name) { return !environment.variable(name).value_or("").empty(); });
}

/// The arguments for Qt. Without a display, windows are drawn in memory only, unless an argument of
/// the user says otherwise.
std::vector<char*> applicationArguments(int count, char* arguments[]) {
  static std::string option = "-platform";
  static std::string value = "offscreen";
  std::vector<char*> result(arguments, arguments + count);
  if (!hasDisplay() && count > 0)
    result.insert(result.begin() + 1, {option.data(), value.data()});
  result.push_back(nullptr);
  return result;
}

} // namespace

int main(int argc, char* argv[]) {
  openMissingStandardDescriptors();
  // Users cannot fix what Qt warns about. QT_LOGGING_RULES shows the warnings.
  QLoggingCategory::setFilterRules(QStringLiteral("*.warning=false"));
  std::vector<char*> arguments = applicationArguments(argc, argv);
  int count = static_cast<int>(arguments.size()) - 1;
  const QApplication application(count, arguments.data());
  const auto root = SystemRoot::of(PosixEnvironment());
  if (const auto* const error = std::get_if<SystemRoot::Error>(&root)) {
    std::cerr << "driftmark: " << error->message << '\n';
    return badSystemRoot;
  }
  Look::apply();
  LinuxPlatform platform(std::get<SystemRoot>(root));
  return runProgram(platform.ports());
}
