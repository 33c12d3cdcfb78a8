// Several runs of "Free Up Space" at once.

#include "desktop/FreeUpSpaceTest.h"
#include "desktop/HeldFolders.h"
#include "harness/ui/ProgramUi.h"

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

constexpr const char* files = "files 3 \"Photos/Held/IMG {n}.heic\" 8192\n"
                              "file \"Letters/Letter.pages\" 4096\n";

class ConcurrentFreeUpSpace : public FreeUpSpaceTest {};

TEST_F(ConcurrentFreeUpSpace, laterRunFinishesWhileEarlierOneWalks) {
  HeldFolders held(session_, "Held");
  start(files);
  pick("Photos");
  held.awaitOpening();

  pick("Letters");
  expectQuestion("Letters", 1, "4 KB");
  driver_->press("Remove Downloads");
  expectReport("iCloud is removing 1 downloads (4 KB). Space is freed as each file is evicted.");
  answer("OK");
  EXPECT_EQ(usage("Letters"), 0U);

  held.releaseOne();
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

TEST_F(ConcurrentFreeUpSpace, runsOnSameFilesBothSucceed) {
  HeldFolders held(session_, "Held");
  start(files);
  pick("Photos");
  held.awaitOpening();
  pick("Photos");
  held.awaitOpening();
  held.releaseOne();
  expectQuestion("Photos", 3, "25 KB");
  held.releaseOne();
  // The second question opens in front of the first one.
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

} // namespace
} // namespace driftmark::test
