#include "platform/linux/StateLog.h"

#include "support/TestSystemLog.h"

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(StateLog, logsTheFirstStateAndEachOther) {
  TestSystemLog log;
  StateLog stateLog(log);
  for (const OverallState state : {OverallState::idle, OverallState::idle, OverallState::both,
                                   OverallState::both, OverallState::attention, OverallState::idle})
    stateLog.note(state);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "Driftmark: state -> idle", "Driftmark: state -> both",
                             "Driftmark: state -> attention", "Driftmark: state -> idle"}));
}

} // namespace
} // namespace driftmark::test
