#include "support/contracts/SignalsContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SignalsContract);

TEST_P(SignalsContract, signalReachesItsOwnSource) {
  int terminations = 0;
  int interrupts = 0;
  const auto terminate = signals().makeSource(QuitSignal::terminate, [&] { ++terminations; });
  const auto interrupt = signals().makeSource(QuitSignal::interrupt, [&] { ++interrupts; });
  ASSERT_TRUE(terminate && interrupt);
  subject_->send(QuitSignal::terminate);
  ASSERT_TRUE(subject_->runUntil([&] { return terminations == 1; }));
  subject_->send(QuitSignal::interrupt);
  ASSERT_TRUE(subject_->runUntil([&] { return interrupts == 1; }));
  EXPECT_EQ(terminations, 1);
}

TEST_P(SignalsContract, handlerRunsFromMainQueue) {
  int calls = 0;
  const auto source = signals().makeSource(QuitSignal::terminate, [&] { ++calls; });
  subject_->send(QuitSignal::terminate);
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(subject_->runUntil([&] { return calls == 1; }));
}

TEST_P(SignalsContract, releasedSourceIsNotCalled) {
  signals().ignore(QuitSignal::terminate);
  int calls = 0;
  int other = 0;
  auto source = signals().makeSource(QuitSignal::terminate, [&] { ++calls; });
  subject_->send(QuitSignal::terminate);
  source = signals().makeSource(QuitSignal::interrupt, [&] { ++other; });
  subject_->send(QuitSignal::interrupt);
  ASSERT_TRUE(subject_->runUntil([&] { return other == 1; }));
  EXPECT_EQ(calls, 0);
}

TEST_P(SignalsContract, ignoredSignalDoesNothing) {
  signals().ignore(QuitSignal::interrupt);
  subject_->send(QuitSignal::interrupt);
  int calls = 0;
  const auto source = signals().makeSource(QuitSignal::interrupt, [&] { ++calls; });
  subject_->send(QuitSignal::interrupt);
  EXPECT_TRUE(subject_->runUntil([&] { return calls == 1; }));
}

TEST_P(SignalsContract, restoredSignalHasItsDefaultAction) {
  for (const QuitSignal signal : {QuitSignal::terminate, QuitSignal::interrupt}) {
    signals().ignore(signal);
    EXPECT_FALSE(subject_->hasDefaultAction(signal));
    signals().restoreDefault(signal);
    EXPECT_TRUE(subject_->hasDefaultAction(signal));
  }
}

} // namespace driftmark::test
