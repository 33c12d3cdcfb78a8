#include "support/contracts/ApplicationContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ApplicationContract);

TEST_P(ApplicationContract, activitiesOverlapAndEndInAnyOrder) {
  auto first = application().beginActivity("one");
  auto second = application().beginActivity("\u00e9in zweiter");
  ASSERT_TRUE(first);
  ASSERT_TRUE(second);
  EXPECT_NE(first, second);
  first.reset();
  auto third = application().beginActivity("");
  ASSERT_TRUE(third);
  third.reset();
  second.reset();
  EXPECT_FALSE(application().isTerminating());
}

TEST_P(ApplicationContract, processIdentifierStaysTheSame) {
  const std::int32_t identifier = application().processIdentifier();
  EXPECT_GT(identifier, 0);
  EXPECT_EQ(application().processIdentifier(), identifier);
}

} // namespace driftmark::test
