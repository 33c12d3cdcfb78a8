// The replay: plays a capture into the program and prints its model.

#include "monitor/SyncMonitor.h"
#include "platform/linux/runloop/LinuxSignals.h"
#include "replay/Anonymiser.h"
#include "replay/CaptureRoot.h"
#include "replay/ReplayPlatform.h"
#include "replay/Report.h"

#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include <QCoreApplication>

namespace {

using namespace driftmark;
namespace fs = std::filesystem;

constexpr std::string_view usage =
    R"(usage: driftmark_replay [--log] FILE
       driftmark_replay --anonymise FILE

Plays FILE, a captured output of `brctl monitor`, through a pseudo-terminal into the program. Prints
how many lines and events it counted, and the model three seconds after the last line. FILE is a
capture of the per-item monitor or of the global monitor, with line ends of either kind. The files
that it names need not exist.

  --log        shows the program's log lines on standard error
  --anonymise  plays nothing: prints the capture with other names of the same lengths
  --help       prints this text
)";

struct Arguments {
  fs::path file;
  bool log = false;
  bool anonymise = false;
  bool help = false;
};

std::optional<Arguments> parsed(int argc, char** argv) {
  Arguments arguments;
  bool optionsEnded = false;
  bool hasFile = false;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (!optionsEnded && argument == "--") {
      optionsEnded = true;
    } else if (!optionsEnded && argument == "--log") {
      arguments.log = true;
    } else if (!optionsEnded && argument == "--anonymise") {
      arguments.anonymise = true;
    } else if (!optionsEnded && argument == "--help") {
      arguments.help = true;
    } else if (hasFile || (!optionsEnded && argument.starts_with("--"))) {
      return std::nullopt;
    } else {
      arguments.file = argument;
      hasFile = true;
    }
  }
  if (arguments.log && arguments.anonymise)
    return std::nullopt;
  return hasFile || arguments.help ? std::optional(arguments) : std::nullopt;
}

/// Throws when `file` cannot be played. Returns whether its last line is complete.
bool checkCapture(const fs::path& file) {
  const fs::file_status status = fs::status(file);
  if (!fs::exists(status))
    throw std::runtime_error("no such file");
  if (fs::is_directory(status))
    throw std::runtime_error("is a folder");
  if (!fs::is_regular_file(status))
    throw std::runtime_error("is not an ordinary file");
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream)
    throw std::system_error(errno, std::generic_category(), "cannot be read");
  if (fs::file_size(file) == 0)
    return true;
  stream.seekg(-1, std::ios::end);
  return stream.get() == '\n';
}

int anonymise(const Arguments& arguments) {
  checkCapture(arguments.file);
  std::ifstream stream(arguments.file, std::ios::binary);
  Anonymiser anonymiser;
  for (std::string line; std::getline(stream, line);) {
    std::cout << anonymiser.anonymised(line);
    if (!stream.eof())
      std::cout << '\n';
  }
  std::cout.flush();
  if (!std::cout)
    throw std::runtime_error("the output cannot be written");
  return 0;
}

int replay(const Arguments& arguments) {
  const bool lastLineComplete = checkCapture(arguments.file);
  const CaptureRoot root;
  root.playFile(arguments.file);

  ReplayPlatform platform({.systemRoot = root.path().string(),
                           .showLog = arguments.log,
                           .onAllEnded = [] { QCoreApplication::quit(); }});
  LinuxSignals signals(platform.mainQueue());
  const auto interrupted = [] { QCoreApplication::exit(1); };
  const auto termination = signals.makeSource(QuitSignal::terminate, interrupted);
  const auto interrupt = signals.makeSource(QuitSignal::interrupt, interrupted);
  const auto monitor = SyncMonitor::make(platform.ports());
  monitor->start();
  if (!platform.children().failure().empty())
    throw std::runtime_error("cannot be played: " + platform.children().failure());
  if (const int status = QCoreApplication::exec(); status != 0)
    return status;

  platform.clock().advance(SyncMonitor::holdDuration);
  printReport(std::cout, *monitor, platform.ports());
  if (!lastLineComplete)
    std::cout << "\nThe last line has no line end and was not read.\n";
  return 0;
}

} // namespace

int main(int argc, char** argv) {
  const auto arguments = parsed(argc, argv);
  if (!arguments) {
    std::cerr << "driftmark_replay: wrong arguments; see --help\n";
    return 2;
  }
  if (arguments->help) {
    std::cout << usage;
    return 0;
  }
  try {
    if (arguments->anonymise)
      return anonymise(*arguments);
    const QCoreApplication application(argc, argv);
    return replay(*arguments);
  } catch (const std::exception& error) {
    std::cerr << "replay: " << arguments->file.string() << ": " << error.what() << '\n';
    return 1;
  }
}
