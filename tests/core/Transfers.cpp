#include "monitor/Transfers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

constexpr Seconds stalledAfter{300};

Date at(double seconds) {
  return later(Date{}, Seconds(1'700'000'000 + seconds));
}

class TransfersTest : public testing::Test {
protected:
  void update(const std::string& path, double seconds, std::optional<double> percent = {},
              Direction direction = Direction::upload) {
    transfers.update(path, direction, percent, at(seconds));
  }
  std::vector<std::string> order() const {
    std::vector<std::string> paths;
    for (const ActiveItem& item : transfers)
      paths.push_back(item.path);
    return paths;
  }
  std::vector<std::string> sweep() {
    std::vector<std::string> paths;
    transfers.beginSweep();
    while (const ActiveItem* const item = transfers.nextInSweep())
      paths.push_back(item->path);
    return paths;
  }

  Transfers transfers{stalledAfter};
};

using Paths = std::vector<std::string>;

TEST_F(TransfersTest, updateOfAKnownPathReplacesIt) {
  EXPECT_TRUE(transfers.update("/a", Direction::upload, 12.0, at(1)));
  EXPECT_FALSE(transfers.update("/a", Direction::download, {}, at(2)));
  ASSERT_NE(transfers.find("/a"), nullptr);
  EXPECT_EQ(transfers.find("/a")->direction, Direction::download);
  EXPECT_EQ(transfers.find("/a")->percent, std::nullopt);
  EXPECT_EQ(transfers.find("/a")->lastUpdate, at(2));
  EXPECT_EQ(transfers.size(), 1U);
}

TEST_F(TransfersTest, pathInTwoPartsNamesTheSameTransfer) {
  const ItemPathHash hash{{}, 5};
  Transfers inFolder(stalledAfter, hash);
  const ItemPath path{"/home", "/a", hash.fingerprint("/a").low};
  EXPECT_TRUE(inFolder.update(path, Direction::upload, 12.0, at(1)));
  EXPECT_FALSE(inFolder.update("/home/a", Direction::upload, 13.0, at(2)));
  EXPECT_EQ(inFolder.begin()->path, "/home/a");
  ASSERT_NE(inFolder.find(path), nullptr);
  EXPECT_EQ(inFolder.find(path)->percent, 13.0);
  EXPECT_TRUE(inFolder.remove(path));
  EXPECT_EQ(inFolder.find("/home/a"), nullptr);
}

TEST_F(TransfersTest, pathWithTheSameHashIsAnotherTransfer) {
  const ItemPathHash hash{{}, 5};
  Transfers inFolder(stalledAfter, hash);
  const std::uint64_t sameHash = hash.fingerprint("/a").low;
  inFolder.update("/home/a", Direction::upload, {}, at(1));
  EXPECT_NE(inFolder.find(ItemPath{"/home", "/a", sameHash}), nullptr);
  for (const ItemPath& other :
       {ItemPath{"/home", "/b", sameHash}, ItemPath{"/root", "/a", sameHash},
        ItemPath{"/home", "/a/a", sameHash}, ItemPath{"/home", "", sameHash}})
    EXPECT_FALSE(inFolder.remove(other)) << std::string(other);
}

TEST_F(TransfersTest, mostRecentlyUpdatedIsFirst) {
  update("/a", 1);
  update("/b", 2);
  update("/c", 3);
  update("/a", 4);
  EXPECT_EQ(order(), (Paths{"/a", "/c", "/b"}));
}

TEST_F(TransfersTest, orderHoldsAfterTheClockWasSetBack) {
  for (int i = 0; i < 5; ++i)
    update("/" + std::to_string(i), 10 * i);
  update("/4", 15);
  update("/3", 16);
  update("/new", 5);
  EXPECT_EQ(order(), (Paths{"/2", "/3", "/4", "/1", "/new", "/0"}));
}

TEST_F(TransfersTest, removedTransferIsHandedOut) {
  update("/a", 1, 12.5);
  update("/b", 2);
  const auto removed = transfers.remove("/a");
  ASSERT_TRUE(removed);
  EXPECT_EQ(removed->path, "/a");
  EXPECT_EQ(removed->percent, 12.5);
  EXPECT_EQ(transfers.remove("/a"), std::nullopt);
  EXPECT_EQ(order(), Paths{"/b"});
}

TEST_F(TransfersTest, transferAtTheThresholdIsLive) {
  update("/a", 0);
  EXPECT_EQ(transfers.stalledCount(at(300)), 0U);
  EXPECT_EQ(transfers.longestStall(at(300)), std::nullopt);
  EXPECT_EQ(transfers.stalledCount(at(300.5)), 1U);
  EXPECT_EQ(transfers.longestStall(at(300.5)), 300.5);
}

TEST_F(TransfersTest, stalledTransferIsLiveAgainAfterTheClockWasSetBack) {
  update("/a", 0, 10.0);
  update("/b", 5, 20.0, Direction::download);
  EXPECT_EQ(transfers.stalledCount(at(1000)), 2U);
  EXPECT_EQ(transfers.progress(at(1000)), std::nullopt);
  EXPECT_EQ(transfers.stalledCount(at(302)), 1U);
  EXPECT_EQ(transfers.live(at(302)).downloads, 1);
  EXPECT_EQ(transfers.progress(at(302)), 20.0);
  EXPECT_EQ(transfers.progress(at(100)), 15.0);
}

TEST_F(TransfersTest, percentageThatIsNoWholeMillionthIsNotRounded) {
  update("/a", 0, 1.49999999);
  EXPECT_EQ(transfers.progress(at(0)), 1.49999999);
  update("/b", 0, 3.0);
  EXPECT_EQ(transfers.progress(at(0)), (1.49999999 + 3.0) / 2);
  transfers.remove("/a");
  EXPECT_EQ(transfers.progress(at(0)), 3.0);
}

TEST_F(TransfersTest, percentageBeyondTheSumsRangeCounts) {
  update("/a", 0, 1e18);
  update("/b", 0, 2.0);
  EXPECT_EQ(transfers.progress(at(0)), (1e18 + 2.0) / 2);
}

TEST_F(TransfersTest, addingAndRemovingLeavesNoTraceInTheMean) {
  update("/a", 0, 0.1);
  for (int i = 0; i < 100'000; ++i) {
    update("/b", 0, 0.7 * (i % 143));
    transfers.remove("/b");
  }
  EXPECT_EQ(transfers.progress(at(0)), 0.1);
}

TEST_F(TransfersTest, sweepVisitsWhatWasThereAtItsBeginningOnce) {
  update("/a", 1);
  update("/b", 2);
  update("/c", 3);
  transfers.beginSweep();
  ASSERT_EQ(transfers.nextInSweep()->path, "/a");
  update("/a", 4); // moves behind the others
  transfers.remove("/b");
  update("/d", 5);
  ASSERT_EQ(transfers.nextInSweep()->path, "/c");
  EXPECT_EQ(transfers.nextInSweep(), nullptr);
  EXPECT_EQ(sweep(), (Paths{"/a", "/c", "/d"}));
}

TEST_F(TransfersTest, restartedClocksMakeEveryTransferLive) {
  update("/a", 0);
  update("/b", 1000, {}, Direction::download);
  transfers.restartClocks(at(2000));
  EXPECT_EQ(transfers.stalledCount(at(2000)), 0U);
  EXPECT_EQ(transfers.live(at(2000)).uploads, 1);
  EXPECT_EQ(transfers.find("/a")->lastUpdate, at(2000));
}

/// Random changes under a clock that jumps both ways, compared with a walk over all transfers.
TEST(TransfersAgainstAWalk, everyAnswerIsThatOfTheWalk) {
  for (unsigned seed = 1; seed <= 8; ++seed) {
    std::mt19937 random(seed);
    const auto below = [&](std::size_t limit) {
      return static_cast<std::size_t>(random()) % limit;
    };
    Transfers transfers(stalledAfter);
    std::map<std::string, ActiveItem> expected;
    double clock = 0;
    for (int step = 0; step < 20'000; ++step) {
      static constexpr std::array<double, 9> jumps{0, 0, 0.25, 1, 1, 30, 299.75, 4000, -1000};
      clock += below(40) == 0 ? jumps[below(9)] * (below(4) == 0 ? -1 : 1) : jumps[below(5)];
      const Date now = at(clock);
      const std::string path = "/" + std::to_string(below(60));
      const std::size_t choice = below(100);
      if (choice < 80) {
        static constexpr std::array<double, 6> odd{1.49999999, 0.1, 33.3, 99.9999999, 1e7, 0};
        std::optional<double> percent;
        if (below(5) > 0)
          percent = below(30) == 0 ? odd[below(6)] : static_cast<double>(below(1000)) / 10;
        const Direction direction = below(2) == 0 ? Direction::upload : Direction::download;
        ASSERT_EQ(transfers.update(path, direction, percent, now), !expected.contains(path));
        expected[path] = {path, direction, percent, now};
      } else if (choice < 99) {
        ASSERT_EQ(transfers.remove(path).has_value(), expected.erase(path) == 1);
      } else {
        transfers.restartClocks(now);
        for (auto& [key, item] : expected)
          item.lastUpdate = now;
      }

      std::size_t stalled = 0;
      std::int64_t uploads = 0;
      std::int64_t downloads = 0;
      std::size_t measured = 0;
      double sum = 0;
      std::optional<double> longest;
      for (const auto& [key, item] : expected) {
        const Seconds age = now - item.lastUpdate;
        if (age > stalledAfter) {
          ++stalled;
          longest = std::max(longest.value_or(0), age.count());
          continue;
        }
        ++(item.direction == Direction::upload ? uploads : downloads);
        if (item.percent) {
          ++measured;
          sum += *item.percent;
        }
      }
      if (below(3) == 0)
        continue; // the border need not move at every step
      ASSERT_EQ(transfers.stalledCount(now), stalled);
      ASSERT_EQ(transfers.live(now).uploads, uploads);
      ASSERT_EQ(transfers.live(now).downloads, downloads);
      ASSERT_EQ(transfers.longestStall(now), longest);
      const auto progress = transfers.progress(now);
      ASSERT_EQ(progress.has_value(), measured > 0);
      if (progress) {
        ASSERT_NEAR(*progress, sum / static_cast<double>(measured), 1e-9 * (1 + sum));
      }
      ASSERT_EQ(transfers.size(), expected.size());
      ASSERT_TRUE(std::is_sorted(
          transfers.begin(), transfers.end(),
          [](const ActiveItem& a, const ActiveItem& b) { return a.lastUpdate > b.lastUpdate; }));
    }
  }
}

} // namespace
} // namespace driftmark::test
