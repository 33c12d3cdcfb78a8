#include "support/contracts/LoginItemContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(LoginItemContract);

TEST_P(LoginItemContract, unregisteredProgramIsNotStarted) {
  const LoginItem::Status status = subject_->loginItem().status();
  EXPECT_TRUE(status == LoginItem::Status::notRegistered || status == LoginItem::Status::notFound)
      << static_cast<int>(status);
  EXPECT_EQ(subject_->loginItem().status(), status) << "reading changes nothing";
}

} // namespace driftmark::test
