#include "core/MonitorTest.h"

#include <string>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

class MonitorProcessesTest : public MonitorTest {
protected:
  static LaunchError error(LaunchError::Stage stage, std::string description = "no luck") {
    return {.stage = stage, .description = std::move(description)};
  }

  std::size_t spawned(const Arguments& arguments) const {
    return platform.childProcesses.children(arguments).size();
  }

  static std::string started(const std::string& name, const TestChild& child) {
    return "Driftmark: " + name + " started (pid " + std::to_string(child.identifier()) + ")";
  }
};

/// One of the two monitors, which behave alike.
struct MonitorCase {
  std::string name;
  std::string title; ///< as the log calls it
  Arguments arguments;

  friend std::ostream& operator<<(std::ostream& out, const MonitorCase& monitor) {
    return out << monitor.name;
  }
};

class EachMonitorTest : public MonitorProcessesTest,
                        public testing::WithParamInterface<MonitorCase> {
protected:
  static const Arguments& arguments() { return GetParam().arguments; }
  static const Arguments& otherArguments() {
    return arguments() == itemMonitor ? globalMonitor : itemMonitor;
  }
  TestChild& child() const { return platform.childProcesses.child(arguments()); }

  /// A line that changes the model.
  static std::string changingLine(const std::string& token) {
    return arguments() == itemMonitor ? " o /" + token + " \u2191 1%" : fraction("0.5", token);
  }

  static std::string exited() {
    return "Driftmark: " + GetParam().title + " exited, restarting in 10s";
  }
};

INSTANTIATE_TEST_SUITE_P(Monitors, EachMonitorTest,
                         testing::Values(MonitorCase{"items", "brctl monitor", itemMonitor},
                                         MonitorCase{"global", "brctl monitor -g", globalMonitor}),
                         caseName);

// ---- start ----

TEST_F(MonitorProcessesTest, startLaunchesTheItemMonitorThenTheGlobalThenAsksQuotaThenStatus) {
  make();
  monitor->start();
  const auto attempts = platform.childProcesses.spawnAttempts();
  ASSERT_EQ(attempts.size(), 2U);
  EXPECT_EQ(attempts[0].executable, "/usr/bin/brctl");
  EXPECT_EQ(attempts[0].arguments, (Arguments{"monitor", "-i", "com.apple.CloudDocs"}));
  EXPECT_EQ(attempts[1].executable, "/usr/bin/brctl");
  EXPECT_EQ(attempts[1].arguments, (Arguments{"monitor", "-g", "-i"}));
  const auto runs = platform.childProcesses.runs();
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_EQ(runs[0]->command().executable, "/usr/bin/brctl");
  EXPECT_EQ(runs[0]->command().arguments, Arguments{"quota"});
  EXPECT_EQ(runs[1]->command().executable, "/usr/bin/brctl");
  EXPECT_EQ(runs[1]->command().arguments, Arguments{"status"});
  EXPECT_EQ(takeLog(),
            (Lines{started("brctl monitor", items()), started("brctl monitor -g", globals())}));
  EXPECT_EQ(changes, 0);
}

TEST_F(MonitorProcessesTest, startedLineNamesTheChildsIdentifier) {
  make();
  monitor->start();
  ASSERT_NE(items().identifier(), globals().identifier());
  EXPECT_EQ(takeLog().front(),
            "Driftmark: brctl monitor started (pid " + std::to_string(items().identifier()) + ")");
}

// ---- chunks and lines ----

TEST_F(MonitorProcessesTest, lineThatArrivesInTwoChunksIsOneLine) {
  start();
  EXPECT_EQ(print(" o /a.txt \u2191 "), 0);
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_EQ(print("45%\r\n o /b.txt \u2191 1%\r\n"), 1);
  EXPECT_EQ(transfer("/a.txt").percent, 45.0);
  EXPECT_TRUE(active("/b.txt"));
}

TEST_F(MonitorProcessesTest, lineInSingleBytesIsOneLine) {
  start();
  const std::string text = " o /caf\u00e9 \u2601.txt \u2191 45%\r\n";
  for (const char byte : text)
    print(std::string(1, byte));
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(active("/caf\u00e9 \u2601.txt"));
}

TEST_F(MonitorProcessesTest, newlineAloneEndsALine) {
  start();
  EXPECT_EQ(print(" o /a.txt \u2191 45%\n o /b.txt \u2191 45%\n"), 1);
  EXPECT_EQ(monitor->active().size(), 2U);
}

TEST_F(MonitorProcessesTest, carriageReturnAloneEndsNoLine) {
  start();
  EXPECT_EQ(print(" o /a.txt \u2191 45%\r o /b.txt \u2191 46%\r"), 0);
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_EQ(print("\n"), 1);
  EXPECT_EQ(monitor->active().size(), 1U);
  EXPECT_EQ(transfer("/a.txt").percent, 45.0);
}

TEST_P(EachMonitorTest, chunkOfSeveralChangingLinesNotifiesOnce) {
  start();
  child().print(changingLine("1") + "\r\n" + changingLine("2") + "\r\n" + changingLine("3") +
                "\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(takeLog().size(), 3U);
}

TEST_P(EachMonitorTest, chunkThatChangesNothingDoesNotNotify) {
  start();
  child().print("header\r\n\r\n\r\nanother\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 0);
}

TEST_P(EachMonitorTest, chunkNotifiesWhenOnlyItsFirstLineChangesSomething) {
  start();
  child().print(changingLine("1") + "\r\nnoise\r\nnoise\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
}

TEST_P(EachMonitorTest, modelIsCompleteWhenTheChangeIsNotified) {
  start();
  std::size_t logged = 0;
  monitor->onChange = [&] { logged = platform.systemLog.lines().size(); };
  child().print(changingLine("1") + "\n" + changingLine("2") + "\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(logged, 2U);
}

TEST_P(EachMonitorTest, chunksAreReadWithoutACallback) {
  start();
  monitor->onChange = nullptr;
  child().print(changingLine("1") + "\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(takeLog().size(), 1U);
}

TEST_P(EachMonitorTest, lineThatIsNotUtf8IsDroppedAndTheNextOnesAreRead) {
  start();
  child().print(changingLine("1") + "\xff\r\n" + changingLine("2") + "\r\n");
  platform.mainQueue.runAll();
  child().print(changingLine("3\xc3") + "\n\x80\n" + changingLine("4") + "\n");
  platform.mainQueue.runAll();
  const Lines lines = takeLog();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_NE(lines[0].find('2'), std::string::npos);
  EXPECT_NE(lines[1].find('4'), std::string::npos);
  EXPECT_EQ(changes, arguments() == itemMonitor ? 2 : 1);
}

TEST_P(EachMonitorTest, characterCutByAChunkIsReadWhole) {
  start();
  const std::string text = changingLine("8") + " \u2601\u2601 \U0001f4c4\r\n";
  const std::size_t cut = text.size() - 4;
  child().print(text.substr(0, cut));
  platform.mainQueue.runAll();
  child().print(text.substr(cut));
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
}

TEST_P(EachMonitorTest, hugeLineInSmallChunksIsReadAndTheNextLineToo) {
  start();
  const std::string piece(640, 'x');
  for (int number = 0; number < 3277; ++number) {
    child().print(piece);
    platform.mainQueue.runAll();
  }
  child().print("\r\n" + changingLine("1") + "\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(takeLog().size(), 1U);
}

TEST_P(EachMonitorTest, emptyLinesAndNulsChangeNothing) {
  start();
  child().print("\n\r\n\0\n\0\0\r\n\x1b\n\x1b[\n"s);
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 0);
  child().print(changingLine("1") + "\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
}

TEST_F(MonitorProcessesTest, feedsDoNotShareTheirUnfinishedLines) {
  start();
  items().print(" o /a.txt");
  globals().print("Fraction completed: 0.5 / Comp");
  platform.mainQueue.runAll();
  EXPECT_TRUE(global("leted: 1 of 4096"));
  EXPECT_EQ(print(" \u2191 5%\n"), 1);
  EXPECT_TRUE(active("/a.txt"));
  EXPECT_EQ(monitor->globalActivity().value().bytes, 4096);
}

TEST_F(MonitorProcessesTest, eachFeedIsReadByItsOwnParser) {
  start();
  EXPECT_EQ(print(fraction("0.5", "4096") + "\n"), 0);
  EXPECT_FALSE(global(" o /a.txt \u2191 5%"));
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(MonitorProcessesTest, hugeItemPathIsReadLikeAnyOther) {
  start();
  const std::string path = "/folder/" + std::string(2'000'000, 'n');
  EXPECT_TRUE(item(path, " \u2191 5%"));
  ASSERT_TRUE(active(path));
  item(path, " \u2601");
  EXPECT_EQ(latest().path, full(path));
  item(path, " \u2601 not downloaded");
  EXPECT_EQ(latest().kind, RecentKind::evicted);
}

// ---- exits and relaunches ----

TEST_P(EachMonitorTest, monitorThatExitsIsRelaunchedTenSecondsLater) {
  start();
  child().exit();
  platform.mainQueue.runAll();
  EXPECT_EQ(takeLog(), Lines{exited()});
  EXPECT_EQ(changes, 0);
  advance(9.999);
  EXPECT_EQ(spawned(arguments()), 1U);
  advance(0.001);
  EXPECT_EQ(spawned(arguments()), 2U);
  EXPECT_EQ(takeLog(), Lines{started(GetParam().title, child())});
  EXPECT_EQ(spawned(otherArguments()), 1U);
}

TEST_P(EachMonitorTest, exitReleasesTheChildAndItsHandle) {
  start();
  const auto first = platform.childProcesses.children(arguments()).front();
  EXPECT_TRUE(first->isHeld());
  EXPECT_TRUE(first->isRead());
  first->exit();
  platform.mainQueue.runAll();
  EXPECT_FALSE(first->isHeld());
  EXPECT_FALSE(first->isRead());
}

TEST_P(EachMonitorTest, relaunchedMonitorIsReadAndRestartedLikeTheFirst) {
  start();
  child().exit();
  advance(10);
  takeLog();
  child().print(changingLine("1") + "\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
  takeLog();
  child().exit();
  advance(10);
  EXPECT_EQ(spawned(arguments()), 3U);
  EXPECT_EQ(takeLog(), (Lines{exited(), started(GetParam().title, child())}));
}

TEST_P(EachMonitorTest, monitorThatExitsAtOnceAgainAndAgainIsRelaunchedEveryTenSeconds) {
  start();
  platform.childProcesses.onSpawn([](TestChild& child) { child.exit(); });
  child().exit();
  advance(10'000);
  EXPECT_EQ(spawned(arguments()), 1001U);
  for (const auto& dead : platform.childProcesses.children(arguments())) {
    EXPECT_FALSE(dead->isHeld());
    EXPECT_FALSE(dead->isRead());
  }
  EXPECT_EQ(platform.mainQueue.waiting().size(), 1U);
}

TEST_P(EachMonitorTest, unfinishedLineOfADeadMonitorIsJoinedToTheFirstOfItsSuccessor) {
  start();
  const std::string text = changingLine("123");
  child().print(text.substr(0, text.size() - 2));
  child().exit();
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 0);
  advance(10);
  child().print(text.substr(text.size() - 2) + "\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
}

TEST_P(EachMonitorTest, unfinishedLineOfADeadMonitorSpoilsTheNextWholeLine) {
  start();
  child().print("half a li");
  child().exit();
  advance(10);
  takeLog();
  child().print("x" + changingLine("1") + "\r\n" + changingLine("2") + "\r\n");
  platform.mainQueue.runAll();
  const Lines lines = takeLog();
  EXPECT_EQ(lines.size(), arguments() == itemMonitor ? 1U : 2U);
  EXPECT_NE(lines.back().find('2'), std::string::npos);
}

TEST_P(EachMonitorTest, outputBeforeTheExitIsRead) {
  start();
  child().print(changingLine("1") + "\r\n");
  child().exit();
  platform.mainQueue.runAll();
  const Lines lines = takeLog();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[1], exited());
  EXPECT_EQ(changes, 1);
}

TEST_F(MonitorProcessesTest, restartDoesNotChangeTheModel) {
  start();
  addFile("/a.txt");
  item("/a.txt", " \u2191 5%");
  item("/b.txt", " \u2601 conflict");
  item("/c.txt", " \u2601 \u2193 5%");
  item("/c.txt", " \u2601");
  addFile("/c.txt");
  global(fraction("0.5", "4096"));
  items().exit();
  globals().exit();
  advance(10);
  EXPECT_EQ(spawned(itemMonitor), 2U);
  EXPECT_EQ(spawned(globalMonitor), 2U);
  EXPECT_TRUE(active("/a.txt"));
  EXPECT_EQ(issue("/b.txt"), "conflict");
  EXPECT_EQ(monitor->recent().size(), 1U);
  EXPECT_EQ(monitor->globalActivity().value().bytes, 4096);
}

TEST_F(MonitorProcessesTest, bothMonitorsAreRestartedIndependently) {
  start();
  items().exit();
  advance(4);
  globals().exit();
  advance(6);
  EXPECT_EQ(spawned(itemMonitor), 2U);
  EXPECT_EQ(spawned(globalMonitor), 1U);
  advance(4);
  EXPECT_EQ(spawned(globalMonitor), 2U);
}

// ---- failures ----

struct FailureCase {
  std::string name;
  LaunchError::Stage stage;
  std::string itemLine;
  std::string globalLine;

  friend std::ostream& operator<<(std::ostream& out, const FailureCase& failure) {
    return out << failure.name;
  }
};

class LaunchFailureTest : public MonitorProcessesTest,
                          public testing::WithParamInterface<FailureCase> {
protected:
  static LaunchError failure() { return error(GetParam().stage, "no such file"); }
};

INSTANTIATE_TEST_SUITE_P(
    Stages, LaunchFailureTest,
    testing::Values(
        FailureCase{"noTerminal", LaunchError::Stage::allocateTerminal,
                    "Driftmark: failed to allocate pty", "Driftmark: failed to allocate pty"},
        FailureCase{"noOtherEnd", LaunchError::Stage::openTerminal,
                    "Driftmark: failed to open pty slave", "Driftmark: failed to open pty slave"},
        FailureCase{
            "noTool", LaunchError::Stage::launch,
            "Driftmark: failed to launch brctl monitor -i com.apple.CloudDocs: no such file",
            "Driftmark: failed to launch brctl monitor -g -i: no such file"}),
    caseName);

TEST_P(LaunchFailureTest, failureIsLoggedOncePerMonitorAndNotRetried) {
  platform.childProcesses.failAllLaunches(failure());
  make();
  monitor->start();
  EXPECT_EQ(takeLog(), (Lines{GetParam().itemLine, GetParam().globalLine}));
  platform.childProcesses.allowLaunches();
  platform.settle();
  advance(3600);
  EXPECT_EQ(platform.childProcesses.spawnAttempts().size(), 2U);
}

TEST_P(LaunchFailureTest, itemMonitorFailureDoesNotAffectTheOthers) {
  platform.childProcesses.failLaunches(itemMonitor, failure());
  platform.childProcesses.script(quotaReport, "1000 bytes");
  platform.childProcesses.script(statusReport, "> downloader{ downloading:");
  make();
  monitor->start();
  EXPECT_EQ(takeLog(), (Lines{GetParam().itemLine, started("brctl monitor -g", globals())}));
  platform.settle();
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(monitor->statusActivity().value().downloads, 1);
  EXPECT_TRUE(global(fraction("0.5", "4096")));
}

TEST_P(LaunchFailureTest, globalMonitorFailureDoesNotAffectTheItemMonitor) {
  platform.childProcesses.failLaunches(globalMonitor, failure());
  make();
  monitor->start();
  EXPECT_EQ(takeLog(), (Lines{started("brctl monitor", items()), GetParam().globalLine}));
  platform.settle();
  EXPECT_TRUE(item("/a.txt", " \u2191 1%"));
}

TEST_P(LaunchFailureTest, failureAtARelaunchEndsTheRestarts) {
  start();
  platform.childProcesses.failAllLaunches(failure());
  items().exit();
  advance(10);
  EXPECT_EQ(takeLog(),
            (Lines{"Driftmark: brctl monitor exited, restarting in 10s", GetParam().itemLine}));
  platform.childProcesses.allowLaunches();
  advance(3600);
  EXPECT_EQ(spawned(itemMonitor), 1U);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(MonitorProcessesTest, missingBrctlIsLoggedOncePerUse) {
  platform.childProcesses.failAllLaunches(error(LaunchError::Stage::launch, "no such file"));
  start();
  advance(3600);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);

  make();
  monitor->start();
  platform.settle();
  EXPECT_EQ(takeLog(),
            (Lines{"Driftmark: failed to launch brctl monitor -i com.apple.CloudDocs: no such file",
                   "Driftmark: failed to launch brctl monitor -g -i: no such file",
                   "Driftmark: brctl quota failed: no such file",
                   "Driftmark: brctl status failed: no such file"}));
}

// ---- stop ----

TEST_F(MonitorProcessesTest, stopEndsBothMonitorsAndNothingIsLoggedOrRelaunched) {
  start();
  monitor->stop();
  EXPECT_EQ(items().terminateRequests(), 1);
  EXPECT_EQ(globals().terminateRequests(), 1);
  platform.settle();
  EXPECT_FALSE(items().isRunning());
  EXPECT_FALSE(items().isHeld());
  EXPECT_FALSE(items().isRead());
  EXPECT_FALSE(globals().isHeld());
  EXPECT_FALSE(globals().isRead());
  advance(3600);
  EXPECT_EQ(platform.childProcesses.spawnAttempts().size(), 2U);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(MonitorProcessesTest, stopKeepsReadingUntilTheChildrenEnd) {
  start();
  items().ignoreTerminate();
  monitor->stop();
  EXPECT_TRUE(item("/a.txt", " \u2191 1%"));
  EXPECT_TRUE(active("/a.txt"));
  items().exit();
  platform.settle();
  EXPECT_TRUE(active("/a.txt"));
}

TEST_F(MonitorProcessesTest, stopKeepsTheModelAndTheUnfinishedLine) {
  start();
  addFile("/a.txt");
  item("/a.txt", " \u2191 1%");
  item("/b.txt", " \u2601 conflict");
  print(" o /c.txt \u2191");
  items().ignoreTerminate();
  monitor->stop();
  platform.settle();
  EXPECT_TRUE(active("/a.txt"));
  EXPECT_EQ(issue("/b.txt"), "conflict");
  EXPECT_EQ(print(" 1%\n"), 1);
  EXPECT_TRUE(active("/c.txt"));
}

TEST_F(MonitorProcessesTest, childThatIgnoresTheRequestKeepsRunning) {
  start();
  items().ignoreTerminate();
  monitor->stop();
  platform.settle();
  EXPECT_TRUE(items().isRunning());
  EXPECT_TRUE(items().isHeld());
  EXPECT_EQ(items().terminateRequests(), 1);
}

TEST_F(MonitorProcessesTest, stopEndsTheReportsThatRun) {
  platform.backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  platform.childProcesses.hang(quotaReport);
  platform.childProcesses.hang(statusReport);
  make();
  monitor->start();
  ASSERT_TRUE(platform.childProcesses.awaitHanging(quotaReport));
  ASSERT_TRUE(platform.childProcesses.awaitHanging(statusReport));
  monitor->stop();
  platform.backgroundQueue.join();
  EXPECT_EQ(platform.childProcesses.runs(quotaReport).front()->terminateRequests(), 1);
  EXPECT_EQ(platform.childProcesses.runs(statusReport).front()->terminateRequests(), 1);
  EXPECT_EQ(platform.childProcesses.terminatedRuns(),
            (std::vector<Arguments>{quotaReport, statusReport}));
  platform.settle();
  advance(3600);
  EXPECT_EQ(platform.childProcesses.runs().size(), 2U);
  EXPECT_EQ(monitor->quotaRemaining(), std::nullopt);
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
}

TEST_F(MonitorProcessesTest, stopWithoutChildrenDoesNothing) {
  make();
  monitor->stop();
  monitor->stop();
  EXPECT_TRUE(platform.childProcesses.spawnAttempts().empty());
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(MonitorProcessesTest, stopDoesNotTerminateADeadChild) {
  start();
  const auto first = platform.childProcesses.children(itemMonitor).front();
  first->exit();
  platform.mainQueue.runAll();
  monitor->stop();
  EXPECT_EQ(first->terminateRequests(), 0);
  EXPECT_EQ(globals().terminateRequests(), 1);
}

TEST_P(EachMonitorTest, relaunchScheduledBeforeTheStopStillRuns) {
  start();
  child().exit();
  platform.mainQueue.runAll();
  monitor->stop();
  takeLog();
  advance(10);
  EXPECT_EQ(spawned(arguments()), 2U);
  EXPECT_EQ(takeLog(), Lines{started(GetParam().title, child())});
  EXPECT_TRUE(child().isRunning());
  child().print(changingLine("1") + "\r\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
  child().exit();
  advance(3600);
  EXPECT_EQ(spawned(arguments()), 2U);
}

TEST_P(EachMonitorTest, exitThatIsHandledAfterTheStopSchedulesNothing) {
  start();
  child().exit();
  monitor->stop();
  platform.mainQueue.runAll();
  EXPECT_EQ(takeLog(), Lines{});
  advance(3600);
  EXPECT_EQ(spawned(arguments()), 1U);
}

TEST_F(MonitorProcessesTest, stopFromInsideTheChangeCallbackEndsTheChildren) {
  start();
  monitor->onChange = [this] { monitor->stop(); };
  items().print(" o /a.txt \u2191 1%\r\n");
  platform.settle();
  EXPECT_FALSE(items().isRunning());
  EXPECT_FALSE(globals().isRunning());
  advance(600);
  EXPECT_EQ(platform.childProcesses.spawnAttempts().size(), 2U);
}

} // namespace
} // namespace driftmark::test
