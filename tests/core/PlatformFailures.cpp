// The program continues when a port fails, ends without a child, and reports what has failed.

#include "app/Program.h"
#include "core/MonitorTest.h"

#include <algorithm>
#include <ostream>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// A run of the whole program with one failure switched on, under a user who agrees to everything.
class ProgramRun {
public:
  explicit ProgramRun(std::optional<Fault> fault) : fault_(fault) {
    platform_.bundle.setIdentifier(identifier);
    platform_.bundle.setVersion("1.0");
    platform_.runningApplications.add(identifier, 17, Seconds(1));
    platform_.childProcesses.script(quotaReport, "4096 bytes of quota remaining\n");
    platform_.childProcesses.script({"-dv", newBundle}, "TeamIdentifier=T4N8RW2KQZ\n");
    platform_.childProcesses.onRun([this](const ToolCommand& command) {
      if (command.arguments.front() == "-xk")
        platform_.fileSystem.add(newBundle);
    });
    platform_.cloudFiles.list(drive, {TestCloudFiles::downloaded(file, 4096)});
    platform_.fileSystem.add(file);
    platform_.dialogs.onShow([this](const Alert& alert) {
      reported_.push_back(alert.messageText + ": " + alert.informativeText);
      if (alert.buttons.size() > 1)
        platform_.dialogs.answer(agreesToMove_ ? 0 : 1);
    });
  }

  /// Starts in Applications: transfers, status, menu, free up space, restart, death of the
  /// monitors, update, quit.
  void use() {
    platform_.bundle.setPath(installed);
    platform_.fileSystem.add(installed);
    run([this] {
      transfer();
      platform_.dialogs.choose(drive);
      choose("Free Up Space…");
      choose("Launch at Login");
      choose("Open iCloud Drive");
      choose("About Driftmark");
      stall();
      choose("Restart iCloud Sync…");
      loseMonitors();
      update();
    });
  }

  /// Starts elsewhere, with an older copy in every Applications folder.
  void move() {
    platform_.bundle.setPath(downloadedBundle);
    for (const char* const each : {downloadedBundle, installed, installedForUser})
      platform_.fileSystem.add(each);
    platform_.fileSystem.add(std::string(downloadedBundle) + "/Contents/Info.plist");
    run([this] { transfer(); });
  }

  /// Starts elsewhere, where the user wants it to stay.
  void stay() {
    agreesToMove_ = false;
    move();
  }

  /// Every line of the log, text of an alert and title of an opened menu.
  const Lines& reported() const { return reported_; }

  std::size_t childrenLeft() const {
    const auto left = [](const auto& children) {
      return std::ranges::count_if(children, [](const auto& each) { return each->isRunning(); });
    };
    return static_cast<std::size_t>(left(platform_.childProcesses.children()) +
                                    left(platform_.childProcesses.runs()));
  }

  bool hasQuit() const { return platform_.application.isTerminating(); }

private:
  static constexpr const char* identifier = "com.example.driftmark";
  static constexpr const char* installed = "/Applications/Driftmark.app";
  static constexpr const char* installedForUser = "/Users/ada/Applications/Driftmark.app";
  static constexpr const char* downloadedBundle = "/Users/ada/Downloads/Driftmark.app";
  static constexpr const char* newBundle = "/private/tmp/ada/Driftmark-update-4711/Driftmark.app";
  static constexpr const char* archive = "/private/var/download.tmp";
  static constexpr const char* drive = "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs";
  static constexpr const char* file =
      "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs/film.mov";

  void run(const std::function<void()>& steps) {
    if (fault_)
      platform_.switchOn(*fault_);
    platform_.application.onRun([&] {
      platform_.application.delegate()->applicationDidFinishLaunching();
      platform_.settle();
      if (!hasQuit())
        steps();
      quit();
      platform_.application.delegate()->applicationWillTerminate();
      platform_.settle();
    });
    runProgram(platform_.platform());
    platform_.settle();
    const Lines log = platform_.systemLog.take();
    reported_.insert(reported_.end(), log.begin(), log.end());
    for (const ToolCommand& command : platform_.childProcesses.detached())
      reported_.push_back("started for later: " + command.executable);
  }

  void quit() {
    if (!hasQuit() && platform_.signals.isIgnored(QuitSignal::terminate))
      platform_.signals.send(QuitSignal::terminate);
    platform_.settle();
    if (hasQuit())
      return;
    platform_.statusBar.open();
    platform_.statusBar.choose("Quit Driftmark");
    platform_.settle();
  }

  void print(const Arguments& monitor, const std::string& line) {
    const auto children = platform_.childProcesses.children(monitor);
    if (!children.empty())
      children.back()->print(line + "\r\n");
    platform_.settle();
  }

  /// Opens the menu and chooses an item that is in it.
  void choose(const std::string& title) {
    if (!platform_.statusBar.hasItem())
      return;
    platform_.statusBar.open();
    platform_.settle();
    const Menu menu = platform_.statusBar.menu();
    for (const MenuItem& item : menu)
      reported_.push_back(item.title);
    if (std::ranges::any_of(menu, [&](const auto& item) { return item.title.starts_with(title); }))
      platform_.statusBar.choose(title);
    platform_.settle();
  }

  void transfer() {
    print(itemMonitor, " o /com~apple~CloudDocs/film.mov \u2191 42%");
    platform_.childProcesses.script(statusReport, "Under /A\n> upload{9 c.txt} active\n");
    print(globalMonitor, "Fraction completed: 0.5 / Completed: 7 of 100");
    platform_.childProcesses.script(statusReport, "");
    pass(Seconds(60));
  }

  void stall() { pass(Seconds(3600)); }

  void loseMonitors() {
    for (const auto& child : platform_.childProcesses.children())
      child->exit();
    pass(Seconds(11));
    print(itemMonitor, " o /com~apple~CloudDocs/film.mov \u2601");
  }

  void update() {
    choose("Check for Updates…");
    if (platform_.httpClient.waiting() > 0)
      platform_.httpClient.reply(R"({"version": "1.5", "url": "https://downloads.example/a.zip"})");
    platform_.settle();
    if (platform_.httpClient.waiting() == 0)
      return;
    platform_.fileSystem.add(archive);
    platform_.httpClient.replyFile(archive);
    platform_.settle();
  }

  /// Lets time pass. The manifest that is fetched meanwhile names no newer release.
  void pass(Seconds duration) {
    for (Seconds passed{}; passed < duration; passed += Seconds(10)) {
      platform_.mainQueue.advance(Seconds(10));
      if (platform_.httpClient.waiting() > 0)
        platform_.httpClient.reply(R"({"version": "0", "url": "https://downloads.example/"})");
      platform_.settle();
    }
  }

  std::optional<Fault> fault_;
  bool agreesToMove_ = true;
  TestPlatform platform_;
  Lines reported_;
};

struct Failure {
  Fault fault;
  const char* name;
  const char* reported;     ///< a part of what is reported only because of it; empty for none
  const char* missing = ""; ///< a part of what is reported only without it; empty for none
};

std::ostream& operator<<(std::ostream& stream, const Failure& failure) {
  return stream << failure.name;
}

Lines reportedIn(std::optional<Fault> fault, void (ProgramRun::*part)()) {
  ProgramRun run(fault);
  (run.*part)();
  EXPECT_EQ(run.childrenLeft(), 0u);
  EXPECT_TRUE(run.hasQuit());
  return run.reported();
}

/// What is reported in all three runs.
Lines reportedIn(std::optional<Fault> fault) {
  Lines reported;
  for (void (ProgramRun::*const part)() :
       {&ProgramRun::use, &ProgramRun::move, &ProgramRun::stay}) {
    const Lines more = reportedIn(fault, part);
    reported.insert(reported.end(), more.begin(), more.end());
  }
  return reported;
}

void expectOnlyIn(const Lines& some, const Lines& others, const std::string& text) {
  EXPECT_THAT(some, Contains(HasSubstr(text)));
  EXPECT_THAT(others, Not(Contains(HasSubstr(text))));
}

class PlatformFailures : public testing::TestWithParam<Failure> {};

TEST_P(PlatformFailures, programContinuesAndReportsState) {
  const Lines usual = reportedIn(std::nullopt);
  const Lines reported = reportedIn(GetParam().fault);
  EXPECT_THAT(reported, Contains("Driftmark: state -> idle"));
  const std::string expected = GetParam().reported;
  const std::string missing = GetParam().missing;
  if (expected.empty() && missing.empty()) {
    EXPECT_EQ(reported, usual);
  }
  if (!expected.empty())
    expectOnlyIn(reported, usual, expected);
  if (!missing.empty())
    expectOnlyIn(usual, reported, missing);
}

INSTANTIATE_TEST_SUITE_P(
    EveryPort, PlatformFailures,
    testing::Values(
        Failure{Fault::noTerminal, "noTerminal", "failed to allocate pty"},
        Failure{Fault::noTerminalEnd, "noTerminalEnd", "failed to open pty slave"},
        Failure{Fault::noMonitor, "noMonitor", "failed to launch brctl monitor -g -i: No such"},
        Failure{Fault::noTool, "noTool", "killall bird failed: No such tool"},
        Failure{Fault::failingTool, "failingTool", "The update archive could not be unpacked."},
        Failure{Fault::noDetachedTool, "noDetachedTool", "", "started for later: /bin/sh"},
        Failure{Fault::noThread, "noThread", "freeing up space failed: Out of threads"},
        Failure{Fault::noWalk, "noWalk", "Nothing to Free in iCloud Drive"},
        Failure{Fault::noPathInWalk, "noPathInWalk", "Nothing to Free in iCloud Drive"},
        Failure{Fault::noValuesInWalk, "noValuesInWalk", "Nothing to Free in iCloud Drive"},
        Failure{Fault::noEviction, "noEviction", "1 could not be evicted (see the log)"},
        Failure{Fault::noAnswer, "noAnswer", "", "evicting 1 files"},
        Failure{Fault::unknownFile, "unknownFile", "dropped vanished transfer film.mov"},
        Failure{Fault::noTemporaryFolder, "noTemporaryFolder",
                "Update failed: The folder is not private"},
        Failure{Fault::noNewFolder, "noNewFolder", "Update failed: The disk is full"},
        Failure{Fault::noRemoval, "noRemoval", "Could not move Driftmark"},
        Failure{Fault::noMove, "noMove", "Update failed: Could not download the update."},
        Failure{Fault::noTrash, "noTrash", ""},
        Failure{Fault::noReply, "noReply", "Could not check for updates: The connection was lost"},
        Failure{Fault::noDownload, "noDownload", "Update failed: The connection was lost"},
        Failure{Fault::noRegistration, "noRegistration", "launch-at-login change failed"},
        Failure{Fault::noSignalSource, "noSignalSource", "cannot catch SIGTERM"},
        Failure{Fault::lostSignal, "lostSignal", "instance 17 ignored the quit request"},
        Failure{Fault::noStatusItem, "noStatusItem", "", "iCloud Drive: Uploading…"},
        Failure{Fault::noSymbol, "noSymbol", ""},
        Failure{Fault::noStoredSetting, "noStoredSetting", ""},
        Failure{Fault::noBundle, "noBundle", "update 1.5 available (running 0)"}),
    caseName);

} // namespace
} // namespace driftmark::test
