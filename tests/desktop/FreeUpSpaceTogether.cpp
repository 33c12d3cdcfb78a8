// Several runs at once, and the end of the program in the middle of one.

#include "desktop/Calls.h"
#include "desktop/FreeUpSpaceTest.h"
#include "desktop/HeldFolders.h"
#include "harness/ui/ProgramUi.h"

#include <csignal>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* stage = "files 3 \"Photos/Held/IMG {n}.heic\" 8192\n"
                              "file \"Letters/Letter.pages\" 4096\n";

/// The paths of everything below a folder, relative to it.
std::vector<std::string> leftIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    names.push_back(entry.path().lexically_relative(folder));
  return names;
}

class FreeUpSpaceTogether : public FreeUpSpaceTest {};

TEST_F(FreeUpSpaceTogether, aSecondRunPassesAFirstThatStillWalks) {
  HeldFolders held(session_, "Held");
  start(stage);
  pick("Photos");
  held.awaitVisitor();

  pick("Letters");
  expectQuestion("Letters", 1, "4 KB");
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 1 downloads (4 KB). Space is freed as each file is evicted.");
  answer("OK");
  EXPECT_EQ(usage("Letters"), 0U);

  held.letOneIn();
  expectQuestion("Photos", 3, "25 KB");
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 3 downloads (25 KB). Space is freed as each file is evicted.");
  answer("OK");
  EXPECT_EQ(usage(), 0U);
  EXPECT_THAT(
      evictionLines(),
      ElementsAre("Driftmark: evicting 1 files (4 KB) under " + (drive() / "Letters").string(),
                  "Driftmark: evicting 3 files (25 KB) under " + (drive() / "Photos").string()));
  expectOrderlyEnd();
}

TEST_F(FreeUpSpaceTogether, aSecondRunMayBeAboutTheSameFiles) {
  HeldFolders held(session_, "Held");
  start(stage);
  pick("Photos");
  held.awaitVisitor();
  pick("Photos");
  held.awaitVisitor();
  held.letOneIn();
  expectQuestion("Photos", 3, "25 KB");
  held.letOneIn();
  // The other question comes while this one is open, with what its survey found.
  driver_->awaitWindow([first = driver_->awaitAlert().number](const icloud::Window& window) {
    return window.kind == icloud::Window::Kind::alert && window.number != first;
  });
  for (int run = 0; run < 2; ++run) {
    expectQuestion("Photos", 3, "25 KB");
    driver_->press("Remove Downloads");
    expectReport("iCloud is removing 3 downloads (25 KB). Space is freed as each file is evicted.");
    answer("OK");
  }
  EXPECT_EQ(usage("Photos"), 0U);
  expectOrderlyEnd();
}

/// The program is told to end while somebody waits for it to go on.
class FreeUpSpaceEnds : public FreeUpSpaceTest {
protected:
  void expectNothingLeft(const std::vector<std::string>& before) {
    EXPECT_THAT(session_.leftRunning({supervisor_->identifier()}), IsEmpty());
    EXPECT_THAT(program_->log.readToEnd(), Not(HasSubstr("failed")));
    EXPECT_THAT(leftIn(session_.home() / ".config"), testing::UnorderedElementsAreArray(before));
    EXPECT_THAT(leftIn(session_.folder() / "tmp"), Each(testing::StartsWith("driftmark-")));
  }

  std::vector<std::string> settings() const { return leftIn(session_.home() / ".config"); }
};

TEST_F(FreeUpSpaceEnds, inTheMiddleOfASurvey) {
  constexpr int many = 1000;
  HeldFolders held(session_, "Held");
  std::string folders;
  for (int number = 0; number < many; ++number)
    folders += "folder \"Photos/Held " + std::to_string(number) + "\"\n";
  start("file \"Photos/Cover.heic\" 4096\n" + folders);
  const auto before = settings();
  pick("Photos");
  held.awaitVisitor();
  program_->process.signal(SIGTERM);
  int visits = 1;
  for (held.letOneIn(); held.awaitVisitorOrEnd(program_->process); held.letOneIn())
    ++visits;
  EXPECT_LT(visits, many);
  EXPECT_EQ(icloud::describeEnd(program_->process.wait()), "status 0");
  EXPECT_EQ(usage(), 4096U);
  expectNothingLeft(before);
}

TEST_F(FreeUpSpaceEnds, inTheMiddleOfAnEviction) {
  Calls evictions(session_.folder() / "evictions");
  const fs::path go = session_.folder() / "go on";
  // The first file is evicted; the second eviction would take longer than anybody waits.
  beforeEviction("( " + evictions.script() + " )\n[ -e '" + go.string() +
                 "' ] && exec sleep 600\n" + ": > '" + go.string() + "'");
  start("files 40 \"Photos/IMG {n}.heic\" 4096\n");
  const auto before = settings();
  pick("Photos");
  expectQuestion("Photos", 40, "164 KB");
  driver_->press("Remove Downloads");
  evictions.next();
  evictions.next();
  program_->process.signal(SIGTERM);
  EXPECT_EQ(icloud::describeEnd(program_->process.wait()), "status 0");
  EXPECT_EQ(usage("Photos"), 39 * 4096U);
  expectNothingLeft(before);
}

} // namespace
} // namespace driftmark::test
