// Files that cannot be evicted, and a daemon that is killed during the evictions.

#include "common/DiskUsage.h"
#include "desktop/Calls.h"
#include "desktop/FreeUpSpaceTest.h"
#include "harness/ui/ProgramUi.h"

#include <csignal>
#include <fstream>
#include <map>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::UnorderedElementsAre;

std::string numbered(const std::string& name, int number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return name + std::string(width - digits.size(), '0') + digits;
}

class FreeUpSpaceFailures : public FreeUpSpaceTest {
protected:
  std::string failure(const std::string& file, const std::string& why) const {
    const std::string path = drive() / file;
    return "Driftmark: evict failed for " + path + ": brctl: " + path + ": " + why;
  }
};

TEST_F(FreeUpSpaceFailures, failedEvictionsAreCountedAndLogged) {
  startDaemon("files 10 \"Photos/IMG {n}.heic\" 4096\n"
              "at 1ms upload \"Photos/IMG 03.heic\" over 10m\n"
              "at 1ms lock \"Photos/IMG 05.heic\"\n"
              "at 20m end\n");
  startProgram();
  program_->log.readUntil("Driftmark: uploading IMG 03.heic\n");
  daemonLog_->readUntil("lock \"Photos/IMG 05.heic\"\n");
  pick("Photos");
  expectQuestion("Photos", 10, "41 KB");
  fs::remove(drive() / "Photos/IMG 08.heic");
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 7 downloads; 3 could not be evicted (see the log).");
  answer("OK");
  EXPECT_THAT(evictionLines(),
              UnorderedElementsAre("Driftmark: evicting 10 files (41 KB) under " +
                                       (drive() / "Photos").string(),
                                   failure("Photos/IMG 03.heic", "still uploading"),
                                   failure("Photos/IMG 05.heic", "Permission denied"),
                                   failure("Photos/IMG 08.heic", "no such file")));
  EXPECT_EQ(usage("Photos"), 2 * 4096U);
  expectOrderlyEnd();
}

TEST_F(FreeUpSpaceFailures, missingToolFailsEveryEviction) {
  start("files 2 \"Photos/IMG {n}.heic\" 4096\n");
  fs::remove(session_.root() / "usr/bin/brctl");
  pick("Photos");
  expectQuestion("Photos", 2, "8 KB");
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 0 downloads; 2 could not be evicted (see the log).");
  answer("OK");
  EXPECT_THAT(evictionLines(), testing::SizeIs(3));
  EXPECT_EQ(usage("Photos"), 2 * 4096U);
  expectOrderlyEnd();
}

/// Many files with known contents.
class FreeUpSpaceCrash : public FreeUpSpaceFailures {
protected:
  static constexpr int many = 1000;
  static constexpr int few = 200;

  FreeUpSpaceCrash() {
    startDaemon("files 1000 \"Films/f{n}\" 4096\nat 20m end\n");
    for (int number = 1; number <= many; ++number)
      contents_[number] = contentsOf(file(number));
    beforeEviction(evictions_.script());
    startProgram();
  }

  /// Waits until so many evictions have started. Reads the log meanwhile, so that the program does
  /// not block on it.
  void awaitEvictions(int count) {
    for (int eviction = 0; eviction < count; ++eviction) {
      evictions_.next();
      program_->log.readSoFar();
    }
  }

  fs::path file(int number) const { return drive() / numbered("Films/f", number, 4); }

  /// The number of files without blocks. Checks that every other file has its contents.
  int evicted() const {
    int count = 0;
    for (const auto& [number, bytes] : contents_) {
      EXPECT_EQ(fs::file_size(file(number)), 4096U);
      if (icloud::bytesOnDisk(file(number)) == 0)
        ++count;
      else
        EXPECT_EQ(contentsOf(file(number)), bytes) << number;
    }
    return count;
  }

  /// The process of the daemon.
  pid_t bird() const {
    const std::string supervisor = std::to_string(supervisor_->identifier());
    pid_t process = 0;
    std::ifstream("/proc/" + supervisor + "/task/" + supervisor + "/children") >> process;
    return process;
  }

  Calls evictions_{session_.folder() / "evictions"};
  std::map<int, std::string> contents_;
};

TEST_F(FreeUpSpaceCrash, nextRunEvictsWhatDaemonCrashLeft) {
  pick("Films");
  expectQuestion("Films", many, "4.1 MB");
  driver_->press("Remove Downloads");
  awaitEvictions(few);
  // The supervisor restarts the daemon only after an eviction has failed without it.
  supervisor_->signal(SIGSTOP);
  ASSERT_EQ(kill(bird(), SIGKILL), 0);
  program_->log.readUntil("bird is not running\n");
  supervisor_->signal(SIGCONT);
  awaitEvictions(many - few);

  const icloud::Window report = awaitAlert(*driver_, "Freeing Up Space");
  const auto failures = static_cast<int>(evictionLines().size()) - 1;
  EXPECT_GE(failures, 1);
  EXPECT_LT(failures, many - few);
  EXPECT_EQ(report.texts.back(), "iCloud is removing " + std::to_string(many - failures) +
                                     " downloads; " + std::to_string(failures) +
                                     " could not be evicted (see the log).");
  const int gone = evicted();
  // An eviction without an answer may have been carried out.
  EXPECT_GE(gone, many - failures);
  EXPECT_LE(gone, many - failures + 1);
  answer("OK");

  const int left = many - gone;
  ASSERT_GT(left, 0);
  pick("Films");
  awaitAlert(*driver_, "Remove Downloads in Films?");
  EXPECT_THAT(driver_->awaitAlert().texts.back(),
              testing::StartsWith(std::to_string(left) + " files using "));
  driver_->press("Remove Downloads");
  awaitEvictions(left);
  const icloud::Window second = awaitAlert(*driver_, "Freeing Up Space");
  EXPECT_THAT(second.texts.back(),
              testing::StartsWith("iCloud is removing " + std::to_string(left) + " downloads ("));
  answer("OK");
  EXPECT_EQ(evicted(), many);
  expectOrderlyEnd();
}

} // namespace
} // namespace driftmark::test
