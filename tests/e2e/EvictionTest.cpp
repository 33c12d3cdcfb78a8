#include "DiskState.h"
#include "SimulatedSystem.h"
#include "common/LocalSocket.h"
#include "process/Pipe.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/xattr.h>

namespace icloud::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::vector<std::string> itemMonitor{"monitor", "-i", "com.apple.CloudDocs"};

class Eviction : public testing::Test {
protected:
  fs::path inDrive(const std::string& path) const { return system_.sandbox().drive() / path; }

  Finished evict(std::vector<std::string> paths) const { return run("evict", std::move(paths)); }
  Finished download(std::vector<std::string> paths) const {
    return run("download", std::move(paths));
  }

  Finished run(const std::string& command, std::vector<std::string> paths) const {
    paths.insert(paths.begin(), command);
    return system_.runBrctl(std::move(paths));
  }

  // A shell changes to `folder` and then becomes brctl.
  Finished evictFrom(const fs::path& folder, const std::string& path) const {
    return runToEnd({"/bin/sh",
                     {"-c", "cd \"$0\" && exec \"$1\" evict \"$2\"", folder,
                      system_.sandbox().root().brctl(), path},
                     {}});
  }

  void expectDone(const Finished& finished) const {
    EXPECT_EQ(finished.exitStatus, 0);
    EXPECT_THAT(finished.output + finished.error, IsEmpty());
  }

  void expectRefused(const std::string& command, const std::string& path,
                     const std::string& reason) const {
    const Finished finished = run(command, {path});
    EXPECT_EQ(finished.exitStatus, 1) << path;
    EXPECT_THAT(finished.output, IsEmpty());
    EXPECT_EQ(finished.error, "brctl: " + path + ": " + reason + "\n");
  }

  SimulatedSystem system_;
};

/// The files that `brctl download` brings back.
class Download : public Eviction {};

/// What is left of client operations when the daemon is started again.
class Restart : public Eviction {};

TEST_F(Eviction, evictionFreesBlocksAndKeepsSizeAndTimes) {
  system_.play("file \"Films/a.mov\" 5123456B\nfile \"empty\" 0B\nat 10m end\n");
  const auto film = inDrive("Films/a.mov");
  const std::array<timespec, 2> times{{{1'000'000'000, 0}, {1'200'000'000, 5}}};
  ASSERT_EQ(utimensat(AT_FDCWD, film.c_str(), times.data(), 0), 0);
  expectDownloaded(film, 5'123'456);
  expectDone(evict({film, inDrive("empty")}));
  expectEvicted(film, 5'123'456);
  expectEvicted(inDrive("empty"), 0);
  EXPECT_EQ(statOf(film).st_atim.tv_sec, 1'000'000'000);
  EXPECT_EQ(statOf(film).st_mtim.tv_sec, 1'200'000'000);
  EXPECT_EQ(statOf(film).st_mtim.tv_nsec, 5);
}

TEST_F(Eviction, monitorShowsClientAndScenarioEvictionsAlike) {
  system_.play("file \"mine\" 4KB\nfile \"its\" 4KB\n"
               "at 0s await monitors\nat 10ms evict \"its\"\nat 10m end\n",
               "");
  Tool monitor = system_.brctl(itemMonitor, Channel::terminal());
  monitor.output().readUntil("watching for changes");
  expectDone(evict({inDrive("mine")}));
  Tool global = system_.brctl({"monitor", "-g", "-i"}, Channel::terminal());
  const std::string text = monitor.output().readUntil("not downloaded", 2);
  const std::string line = "\x1b[1m o \x1b[0m/com~apple~CloudDocs/";
  for (const char* const name : {"mine", "its"})
    EXPECT_THAT(text, HasSubstr(line + name + " ☁ \x1b[2mnot downloaded"));
}

TEST_F(Eviction, evictedFileNeedsNoEviction) {
  system_.play("file \"far\" 4KB remote\nat 10m end\n");
  Tool monitor = system_.brctl(itemMonitor, Channel::terminal());
  monitor.output().readUntil("watching for changes");
  expectDone(evict({inDrive("far")}));
  expectDone(evict({inDrive("far")}));
  expectDone(download({inDrive("far")}));
  const std::string text = monitor.output().readUntil("↓");
  EXPECT_EQ(text.find("not downloaded"), text.rfind("not downloaded"));
}

TEST_F(Eviction, pathsMayBeRelativeOrThroughLinks) {
  system_.play("files 6 \"A/B/{n}\" 4KB\nat 10m end\n");
  const TemporaryFolder elsewhere;
  fs::create_directory_symlink(system_.sandbox().drive(), elsewhere.path() / "drive");
  fs::create_directory_symlink("A/B", inDrive("link"));
  expectDone(evictFrom(inDrive("A"), "B/1"));
  expectDone(evictFrom(inDrive("A/B"), "../../A/./B/2"));
  expectDone(evictFrom(elsewhere.path(), "drive/A/B/3"));
  expectDone(evict({elsewhere.path() / "drive/link/4", inDrive("link/5")}));
  for (int number = 1; number <= 5; ++number)
    expectEvicted(inDrive("A/B/" + std::to_string(number)), 4000);
  expectDownloaded(inDrive("A/B/6"), 4000);
}

TEST_F(Eviction, refusalNamesReason) {
  system_.play("folder \"Folder\"\n"
               "file \"here\" 4KB\nfile \"doomed\" 4KB\nfile \"broken\" 4KB\nfile \"sent\" 4KB\n"
               "file \"locked\" 4KB\nfile \"coming\" 4KB remote\n"
               "error \"broken\"\nlock \"locked\"\n"
               "at 0s vanish \"doomed\"\n"
               "at 0s upload \"sent\" over 60s\n"
               "at 0s download \"coming\" over 60s\n"
               "at 0s quota 1\n"
               "at 10m end\n",
               "");
  system_.bird().output().readUntil("quota 1");
  const TemporaryFolder elsewhere;
  fs::create_symlink(inDrive("here"), elsewhere.path() / "link");
  fs::create_symlink("here", inDrive("link"));
  fs::create_directory_symlink(elsewhere.path(), inDrive("out"));
  std::ofstream(inDrive("by hand")) << "text";
  expectRefused("evict", inDrive("Folder"), "is a folder");
  expectRefused("evict", inDrive("Folder/"), "is a folder");
  expectRefused("evict", inDrive("Folder/.."), "is a folder");
  expectRefused("evict", inDrive("doomed"), "no such file");
  expectRefused("evict", inDrive("never"), "no such file");
  expectRefused("evict", inDrive("no folder/never"), "no such file");
  expectRefused("evict", inDrive("here/never"), "no such file");
  expectRefused("evict", "/", "not in iCloud Drive");
  expectRefused("evict", elsewhere.write("a", "text"), "not in iCloud Drive");
  expectRefused("evict", elsewhere.path() / "link", "not in iCloud Drive");
  expectRefused("evict", inDrive("out/a"), "not in iCloud Drive");
  expectRefused("evict", inDrive("link"), "still uploading");
  expectRefused("evict", inDrive("by hand"), "still uploading");
  expectRefused("evict", inDrive("broken"), "still uploading");
  expectRefused("evict", inDrive("sent"), "still uploading");
  expectRefused("evict", inDrive("coming"), "still downloading");
  expectRefused("evict", inDrive("locked"), "Permission denied");
  for (const char* const name : {"here", "locked"})
    expectDownloaded(inDrive(name), 4000);
  EXPECT_EQ(contentsOf(inDrive("by hand")), "text");
}

TEST_F(Eviction, manuallyChangedFileIsLeftAlone) {
  system_.play("files 3 \"{n}\" 100KB\nat 10m end\n");
  expectDone(evict({inDrive("3")}));
  std::fstream(inDrive("1"), std::ios::in | std::ios::out).seekp(99'999).put('!');
  std::ofstream(inDrive("2"), std::ios::app) << "more";
  std::fstream(inDrive("3"), std::ios::in | std::ios::out) << "new";
  for (const char* const name : {"1", "2", "3"}) {
    const std::string before = contentsOf(inDrive(name));
    expectRefused("evict", inDrive(name), "still uploading");
    EXPECT_EQ(contentsOf(inDrive(name)), before);
  }
  expectRefused("download", inDrive("3"), "still uploading");
}

TEST_F(Eviction, openFileIsRefused) {
  system_.play("file \"a\" 4KB\nat 10m end\n");
  const std::string before = contentsOf(inDrive("a"));
  {
    std::ifstream reader(inDrive("a"));
    expectRefused("evict", inDrive("a"), "in use by another program");
  }
  EXPECT_EQ(contentsOf(inDrive("a")), before);
  expectDone(evict({inDrive("a")}));
}

TEST_F(Eviction, oneFailureDoesNotAffectOtherPaths) {
  system_.play("files 3 \"{n}\" 4KB\nat 10m end\n");
  const Finished finished =
      evict({inDrive("1"), inDrive("none"), inDrive("2"), "/elsewhere", inDrive("3")});
  EXPECT_EQ(finished.exitStatus, 1);
  EXPECT_EQ(finished.error, "brctl: " + inDrive("none").string() +
                                ": no such file\nbrctl: /elsewhere: not in iCloud Drive\n");
  for (const char* const name : {"1", "2", "3"})
    expectEvicted(inDrive(name), 4000);
}

TEST_F(Eviction, missingBirdIsReportedForEveryPath) {
  for (const char* const command : {"evict", "download"})
    EXPECT_EQ(run(command, {"/a", "b"}).error,
              "brctl: /a: bird is not running\nbrctl: b: bird is not running\n");
}

TEST_F(Eviction, lostBirdIsReported) {
  const fs::path folder = system_.sandbox().root().runFolder();
  fs::create_directories(folder);
  Descriptor listener = listenAt(folder, SystemRoot::birdSocket);
  Tool brctl = system_.brctl({"evict", "/a", "/b"}, Channel::pipe());
  ASSERT_TRUE(isReadableWithin(listener.get(), std::chrono::seconds(30)));
  Descriptor connection(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
  ASSERT_TRUE(isReadableWithin(connection.get(), std::chrono::seconds(30)));
  listener.reset();
  connection.reset();
  EXPECT_EQ(brctl.output().readToEnd(), "brctl: /a: the connection to bird was lost\n"
                                        "brctl: /b: bird is not running\n");
}

TEST_F(Download, sameBytesAreRestored) {
  system_.play("file \"a\" 777777B\nfile \"b\" 777777B\nfile \"far\" 70001B remote\nat 10m end\n",
               "");
  const std::string before = contentsOf(inDrive("a"));
  EXPECT_NE(before, contentsOf(inDrive("b")));
  EXPECT_NE(before, std::string(before.size(), '\0'));
  const auto modified = fs::last_write_time(inDrive("a"));
  expectDone(evict({inDrive("a")}));
  EXPECT_EQ(contentsOf(inDrive("a")), std::string(before.size(), '\0'));
  Tool monitor = system_.brctl(itemMonitor, Channel::terminal());
  monitor.output().readUntil("watching for changes");
  expectDone(download({inDrive("a"), inDrive("b"), inDrive("far"), inDrive("a")}));
  system_.bird().output().readUntil("the download of \"a\" is finished\n");
  EXPECT_EQ(contentsOf(inDrive("a")), before);
  EXPECT_EQ(fs::last_write_time(inDrive("a")), modified);
  expectDownloaded(inDrive("a"), 777'777);
  const std::string text = monitor.output().readUntil("/a ☁\r\n");
  EXPECT_THAT(text, HasSubstr("/a ☁ \x1b[32m↓ 0%"));
  EXPECT_THAT(text, HasSubstr("/a ☁ \x1b[32m↓ 69.6%"));
  EXPECT_THAT(text, Not(HasSubstr("/b ☁ \x1b[32m↓")));
  expectDone(evict({inDrive("a")}));
  expectEvicted(inDrive("a"), 777'777);
}

TEST_F(Download, refusalNamesReason) {
  system_.play("folder \"Folder\"\nfile \"locked\" 4KB remote\nlock \"locked\"\nat 10m end\n", "");
  std::ofstream(inDrive("by hand")) << "text";
  expectRefused("download", inDrive("Folder"), "is a folder");
  expectRefused("download", inDrive("none"), "no such file");
  expectRefused("download", "/tmp", "not in iCloud Drive");
  expectRefused("download", inDrive("locked"), "Permission denied");
  expectDone(download({inDrive("by hand")}));
}

TEST_F(Download, downloadContinuesAfterScenarioEnds) {
  system_.play("file \"a\" 4KB remote\nat 0s quota 1\nat 300ms upload \"b\" 1KB over 60s\n"
               "at 400ms end\n",
               "");
  system_.bird().output().readUntil("quota 1\n");
  expectDone(download({inDrive("a")}));
  const std::string reported = system_.bird().output().readUntil("\"a\" is finished\n");
  EXPECT_THAT(reported, HasSubstr(" end\n"));
  expectDownloaded(inDrive("a"), 4000);
}

TEST_F(Download, downloadOfDeletedFileFails) {
  system_.play("file \"a\" 90MB remote\nat 10m end\n", "");
  expectDone(download({inDrive("a")}));
  fs::remove(inDrive("a"));
  const std::string reported = system_.bird().output().readUntil(" fails: ");
  EXPECT_THAT(reported, Not(HasSubstr("trouble")));
  expectRefused("download", inDrive("a"), "no such file");
}

TEST_F(Restart, clientOperationsSurviveRestart) {
  system_.playSupervised("files 4 \"{n}\" 300KB\nfile \"5\" 300KB remote\n"
                         "at 0s quota 1\n"
                         "at 100ms upload \"3\" over 100ms\n"
                         "at 10m end\n",
                         "");
  const std::string before = contentsOf(inDrive("2"));
  system_.bird().output().readUntil("quota 1\n");
  expectDone(evict({inDrive("1"), inDrive("2")}));
  expectDone(download({inDrive("2")}));
  system_.bird().output().readUntil("\"2\" is finished\n");
  expectDone(evict({inDrive("3")}));
  expectDone(download({inDrive("3"), inDrive("5")}));
  for (unsigned time = 1; time <= 2; ++time) {
    runToEnd({system_.sandbox().root().killall(), {"bird"}, {}});
    system_.bird().output().readUntil(" resumed\n", time);
  }
  system_.bird().output().readUntil("the download of \"5\" is finished\n");
  Tool monitor = system_.brctl(itemMonitor, Channel::terminal());
  const std::string listed = monitor.output().readUntil("watching");
  EXPECT_THAT(listed, HasSubstr("/1 ☁ \x1b[2mnot downloaded"));
  for (const char* const name : {"2", "3", "4", "5"}) {
    EXPECT_THAT(listed, HasSubstr(std::string("/") + name + " ☁\r\n"));
    expectDownloaded(inDrive(name), 300'000);
  }
  EXPECT_EQ(contentsOf(inDrive("2")), before);
  EXPECT_THAT(system_.bird().output().readSoFar(), Not(HasSubstr("trouble")));
}

// The states that a daemon leaves when it is killed between two steps of an operation.
TEST_F(Restart, interruptedWorkIsFinished) {
  system_.play("files 4 \"{n}\" 300KB\nfile \"5\" 300KB remote\nat 10m end\n", "");
  const std::string before = contentsOf(inDrive("1"));
  if (!stateAttribute(inDrive("1")))
    GTEST_SKIP() << "this file system has no attributes";
  system_.killBird();
  const auto note = [&](const char* name, const std::string& state) {
    ASSERT_EQ(setxattr(inDrive(name).c_str(), "user.icloud.state", state.data(), state.size(), 0),
              0);
  };
  note("1", "evicted");
  note("2", "evicted");
  ASSERT_EQ(truncate(inDrive("2").c_str(), 4096), 0);
  ASSERT_EQ(truncate(inDrive("2").c_str(), 300'000), 0);
  note("3", "evicted");
  std::fstream(inDrive("3"), std::ios::in | std::ios::out) << "by hand";
  note("5", "downloading");
  for (int time = 0; time < 2; ++time) {
    system_.resume();
    for (const char* const name : {"1", "2"})
      expectEvicted(inDrive(name), 300'000);
    EXPECT_THAT(contentsOf(inDrive("3")), testing::StartsWith("by hand"));
    expectDownloaded(inDrive("4"), 300'000);
    system_.killBird();
  }
  system_.resume();
  expectDone(download({inDrive("1")}));
  for (const char* const name : {"1", "5"})
    system_.bird().output().readUntil(std::string("\"") + name + "\" is finished\n");
  EXPECT_EQ(contentsOf(inDrive("1")), before);
  expectDownloaded(inDrive("5"), 300'000);
}

std::string numbered(int number) {
  std::string digits = std::to_string(number);
  return "Many/" + std::string(4 - digits.size(), '0') + digits;
}

TEST_F(Eviction, thousandFilesAreEvictedQuickly) {
  system_.play("files 1000 \"Many/{n}\" 60KB\nat 10m end\n", "");
  std::vector<std::string> paths;
  for (int number = 1; number <= 1000; ++number)
    paths.push_back(inDrive(numbered(number)));
  expectDone(evict({inDrive(numbered(1))}));
  const auto begin = std::chrono::steady_clock::now();
  expectDone(evict(paths));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  for (int number = 1; number <= 1000; ++number)
    expectEvicted(inDrive(numbered(number)), 60'000);
}

// Every file is complete or evicted at every moment, and a second run finishes the work.
TEST_F(Restart, killedBirdLosesNothing) {
  system_.play("files 1000 \"Many/{n}\" 60KB\nat 10m end\n", "");
  std::vector<std::string> paths{"evict"};
  std::vector<std::string> before{""};
  for (int number = 1; number <= 1000; ++number) {
    paths.push_back(inDrive(numbered(number)));
    before.push_back(contentsOf(paths.back()));
  }
  const auto evictedCount = [&] {
    int count = 0;
    for (int number = 1; number <= 1000; ++number) {
      const fs::path path = inDrive(numbered(number));
      const bool isEvicted = statOf(path).st_blocks == 0;
      count += isEvicted ? 1 : 0;
      if (isEvicted) {
        expectEvicted(path, 60'000);
      } else {
        EXPECT_EQ(stateAttribute(path).value_or("current"), "current");
        EXPECT_EQ(contentsOf(path), before[static_cast<std::size_t>(number)]);
      }
    }
    return count;
  };
  std::signal(SIGIO, SIG_IGN); // bird waits for the barrier
  for (const int barrier : {300, 600, 900}) {
    // A process that opens this file for writing waits, so that bird cannot finish before it is
    // killed.
    const Descriptor held(
        open(paths[static_cast<std::size_t>(barrier)].c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(fcntl(held.get(), F_SETLEASE, F_RDLCK), 0);
    Tool monitor = system_.brctl(itemMonitor, Channel::terminal());
    monitor.output().readUntil("watching for changes");
    Tool brctl = system_.brctl(paths, Channel::pipe());
    const int seen = barrier - 299 + (barrier - 300) / 6;
    monitor.output().readUntil("not downloaded", static_cast<unsigned>(seen));
    system_.killBird();
    EXPECT_THAT(brctl.output().readToEnd(), HasSubstr(": bird is not running\n"));
    system_.resume();
    const int evicted = evictedCount();
    EXPECT_GE(evicted, seen);
    EXPECT_LT(evicted, barrier);
  }
  expectDone(system_.runBrctl(paths));
  EXPECT_EQ(evictedCount(), 1000);
  expectDone(download({paths[1], paths[500], paths[1000]}));
  for (const int number : {1, 500, 1000}) {
    system_.bird().output().readUntil("the download of \"" + numbered(number) + "\" is finished");
    EXPECT_EQ(contentsOf(inDrive(numbered(number))), before[static_cast<std::size_t>(number)]);
  }
}

} // namespace
} // namespace icloud::test
