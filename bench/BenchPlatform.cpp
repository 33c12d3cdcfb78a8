// The adapters that a monitor is measured on.

#include "BenchPlatform.h"

namespace driftmark::bench {
namespace {

class IdleTimer : public Timer {};

class IdleProcess : public ChildProcess {
public:
  std::int32_t identifier() const override { return 1; }
  bool isRunning() const override { return true; }
  void terminate() override {}
};

class IdleHandle : public ReadHandle {
public:
  void clearReadabilityHandler() override {}
};

class IdleRun : public ToolRun {
public:
  std::int32_t identifier() const override { return 0; }
  bool isRunning() const override { return false; }
  void terminate() override {}
  std::variant<ToolResult, LaunchError> run() override { return ToolResult{}; }
};

} // namespace

void BenchMainQueue::async(Task /*task*/) {}

void BenchMainQueue::after(Seconds /*delay*/, Task /*task*/) {}

std::unique_ptr<Timer> BenchMainQueue::repeat(Seconds /*interval*/, Seconds /*tolerance*/,
                                              Task /*task*/) {
  return std::make_unique<IdleTimer>();
}

std::optional<PlatformError> BenchBackgroundQueue::async(QualityOfService /*quality*/,
                                                         Task /*task*/) {
  return std::nullopt;
}

std::variant<TerminalChild, LaunchError>
BenchChildProcesses::spawn(const ToolCommand& command, DataHandler onData, ExitHandler /*onExit*/) {
  if (command.arguments == std::vector<std::string>{"monitor", "-i", "com.apple.CloudDocs"})
    itemData_ = std::move(onData);
  return TerminalChild{std::make_shared<IdleProcess>(), std::make_unique<IdleHandle>()};
}

std::shared_ptr<ToolRun> BenchChildProcesses::prepare(const ToolCommand& /*command*/,
                                                      ToolOutput /*output*/) {
  return std::make_shared<IdleRun>();
}

std::optional<LaunchError> BenchChildProcesses::launchDetached(const ToolCommand& /*command*/) {
  return std::nullopt;
}

void BenchChildProcesses::feed(std::string_view bytes, std::size_t chunk) const {
  for (std::size_t at = 0; at < bytes.size(); at += chunk)
    itemData_(bytes.substr(at, chunk));
}

Platform replaced(const Platform& all, ChildProcesses& children, StatusBar& statusBar,
                  SystemLog& log, Dialogs& dialogs) {
  return {.clock = all.clock,
          .mainQueue = all.mainQueue,
          .backgroundQueue = all.backgroundQueue,
          .childProcesses = children,
          .systemLog = log,
          .fileSystem = all.fileSystem,
          .environment = all.environment,
          .text = all.text,
          .httpClient = all.httpClient,
          .dialogs = dialogs,
          .userDefaults = all.userDefaults,
          .bundle = all.bundle,
          .application = all.application,
          .runningApplications = all.runningApplications,
          .signals = all.signals,
          .statusBar = statusBar,
          .workspace = all.workspace,
          .loginItem = all.loginItem,
          .cloudFiles = all.cloudFiles};
}

} // namespace driftmark::bench
