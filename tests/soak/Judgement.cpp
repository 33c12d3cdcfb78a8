// Which recorded figures of a long run count as growth.

#include "soak/Judgement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::soak::test {
namespace {

using icloud::ProcessHoldings;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr ProcessHoldings usual{.memory = 61'440, .descriptors = 31, .threads = 6, .children = 2};

/// Fifteen minutes in which the figures vary, but do not grow.
std::vector<ProcessHoldings> recorded() {
  std::vector<ProcessHoldings> figures(90, usual);
  for (std::size_t i = 0; i < figures.size(); ++i)
    figures[i].memory -= i % 3 * 700;
  for (std::size_t i = 1; i < figures.size(); i += 3)
    figures[i] = {.memory = 60'000, .descriptors = 29, .threads = 6, .children = 1};
  return figures;
}

TEST(Judgement, figuresThatVaryWithoutGrowthPass) {
  const Judgement judgement = judge(recorded());
  EXPECT_THAT(judgement.complaints, IsEmpty());
  EXPECT_EQ(judgement.first.memory, 61'440u);
  EXPECT_EQ(judgement.last.descriptors, 31u);
}

TEST(Judgement, oneDescriptorPerMinuteIsReported) {
  auto figures = recorded();
  for (std::size_t i = 0; i < figures.size(); ++i)
    figures[i].descriptors += i / 6;
  EXPECT_THAT(judge(figures).complaints,
              ElementsAre("descriptors: 35 at most in the first third, 45 in the last"));
}

TEST(Judgement, hundredBytesPerEventAreReported) {
  constexpr std::size_t kibibytesPerInterval = 100 * 5000 * 10 / 1024;
  auto figures = recorded();
  for (std::size_t i = 0; i < figures.size(); ++i)
    figures[i].memory += i * kibibytesPerInterval;
  EXPECT_THAT(judge(figures).complaints, ElementsAre(testing::StartsWith("memory in KiB: ")));
}

TEST(Judgement, oneMoreThreadOrChildIsReported) {
  auto figures = recorded();
  figures.back().threads = 7;
  figures.back().children = 3;
  EXPECT_THAT(judge(figures).complaints,
              ElementsAre("threads: 6 at most in the first third, 7 in the last",
                          "children: 2 at most in the first third, 3 in the last"));
}

TEST(Judgement, childThatStaysAwayIsReported) {
  auto figures = recorded();
  for (std::size_t i = 60; i < figures.size(); ++i)
    figures[i].children = 1;
  EXPECT_THAT(judge(figures).complaints,
              ElementsAre("children: 2 at most in the first third, 1 in the last"));
}

TEST(Judgement, memoryMayGrowByOneMebibyteOrTwoPercent) {
  const auto complaintsAbout = [](std::size_t first, std::size_t last) {
    return judge({{.memory = first}, {}, {.memory = last}}).complaints.size();
  };
  EXPECT_EQ(complaintsAbout(10'000, 11'024), 0u);
  EXPECT_EQ(complaintsAbout(10'000, 11'025), 1u);
  EXPECT_EQ(complaintsAbout(100'000, 102'000), 0u);
  EXPECT_EQ(complaintsAbout(100'000, 102'001), 1u);
  EXPECT_EQ(complaintsAbout(100'000, 50'000), 0u);
}

TEST(Judgement, tooFewFiguresAreReported) {
  EXPECT_THAT(judge({}).complaints, testing::SizeIs(1));
  EXPECT_THAT(judge({usual, usual}).complaints, testing::SizeIs(1));
}

TEST(Figures, toolThatRunsForAMomentDoesNotCount) {
  std::vector<ProcessHoldings> samples(40, usual);
  for (std::size_t i = 20; i < 27; ++i)
    samples[i] = {.memory = 70'000, .descriptors = 33, .threads = 7, .children = 3};
  const ProcessHoldings figures = figuresOf(samples, 8);
  EXPECT_EQ(figures.children, 2u);
  EXPECT_EQ(figures.descriptors, 31u);
  EXPECT_EQ(figures.threads, 6u);
  EXPECT_EQ(figures.memory, 70'000u) << "the most memory counts, however short";
}

TEST(Figures, whatIsHeldForTwoSecondsCounts) {
  std::vector<ProcessHoldings> samples(40, usual);
  for (std::size_t i = 20; i < 28; ++i)
    samples[i].children = 3;
  EXPECT_EQ(figuresOf(samples, 8).children, 3u);
  EXPECT_EQ(figuresOf({usual}, 8).children, 2u) << "fewer samples than that";
}

} // namespace
} // namespace driftmark::soak::test
