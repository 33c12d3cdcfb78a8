#include "support/contracts/RunningApplicationsContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RunningApplicationsContract);

TEST_P(RunningApplicationsContract, laterStartHasNoSmallerStartTime) {
  const std::int32_t first = subject_->start();
  const std::int32_t second = subject_->start();
  const auto oldest = applications().startTime(subject_->oldest());
  const auto older = applications().startTime(first);
  const auto newer = applications().startTime(second);
  ASSERT_TRUE(oldest && older && newer);
  EXPECT_LE(*oldest, *older);
  EXPECT_LE(*older, *newer);
  subject_->end(first);
  subject_->end(second);
}

TEST_P(RunningApplicationsContract, startTimeStaysTheSame) {
  const auto before = applications().startTime(subject_->oldest());
  const std::int32_t other = subject_->start();
  EXPECT_EQ(applications().startTime(subject_->oldest()), before);
  subject_->end(other);
}

TEST_P(RunningApplicationsContract, endedProcessHasNoStartTime) {
  const std::int32_t process = subject_->start();
  EXPECT_TRUE(applications().isRunning(process));
  EXPECT_TRUE(applications().startTime(process));
  subject_->end(process);
  EXPECT_FALSE(applications().isRunning(process));
  EXPECT_FALSE(applications().startTime(process));
}

TEST_P(RunningApplicationsContract, identifierOfNoProcessHasNoStartTime) {
  EXPECT_FALSE(applications().startTime(-1));
}

} // namespace driftmark::test
