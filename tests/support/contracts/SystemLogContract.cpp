#include "support/contracts/SystemLogContract.h"

#include <algorithm>
#include <thread>

namespace driftmark::test {

using Lines = std::vector<std::string>;

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SystemLogContract);

TEST_P(SystemLogContract, lineIsWrittenUnchanged) {
  systemLog().log("Driftmark: uploading report.pdf");
  EXPECT_EQ(subject_->lines(1), Lines{"Driftmark: uploading report.pdf"});
}

TEST_P(SystemLogContract, linesKeepOrder) {
  Lines expected;
  for (int number = 0; number < 100; ++number) {
    expected.push_back("Driftmark: line " + std::to_string(number));
    systemLog().log(expected.back());
  }
  EXPECT_EQ(subject_->lines(expected.size()), expected);
}

TEST_P(SystemLogContract, textIsNotUsedAsFormat) {
  systemLog().log("Driftmark: uploading 100% %s %d %@ %n.txt");
  EXPECT_EQ(subject_->lines(1), Lines{"Driftmark: uploading 100% %s %d %@ %n.txt"});
}

TEST_P(SystemLogContract, namesInAnyScriptAreUnchanged) {
  const std::string line = "Driftmark: uploading \u5199\u771f caf\u00e9 \U0001f4c4.txt";
  systemLog().log(line);
  EXPECT_EQ(subject_->lines(1), Lines{line});
}

TEST_P(SystemLogContract, longLineStaysOneLine) {
  const std::string line = "Driftmark: uploading " + std::string(20000, 'x');
  systemLog().log(line);
  EXPECT_EQ(subject_->lines(1), Lines{line});
}

TEST_P(SystemLogContract, lineEndsWithItsView) {
  const std::string text = "Driftmark: synced a.txt (upload) and more";
  systemLog().log(std::string_view(text).substr(0, 32));
  systemLog().log("Driftmark: next");
  EXPECT_EQ(subject_->lines(2), (Lines{"Driftmark: synced a.txt (upload)", "Driftmark: next"}));
}

TEST_P(SystemLogContract, linesOfSeveralThreadsAreNotMixed) {
  constexpr int threadCount = 4;
  constexpr int linesPerThread = 50;
  std::vector<std::thread> threads;
  Lines expected;
  for (int thread = 0; thread < threadCount; ++thread) {
    const std::string line =
        "Driftmark: " + std::string(500, static_cast<char>('a' + thread)) + " end";
    expected.insert(expected.end(), linesPerThread, line);
    threads.emplace_back([this, line] {
      for (int number = 0; number < linesPerThread; ++number)
        systemLog().log(line);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  Lines lines = subject_->lines(expected.size());
  std::sort(lines.begin(), lines.end());
  EXPECT_EQ(lines, expected);
}

} // namespace driftmark::test
