#include "support/contracts/EnvironmentContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(EnvironmentContract);

TEST_P(EnvironmentContract, unsetVariableIsAbsent) {
  subject_->unset("DRIFTMARK_CONTRACT_TEST");
  EXPECT_EQ(environment().variable("DRIFTMARK_CONTRACT_TEST"), std::nullopt);
}

TEST_P(EnvironmentContract, setVariableHasItsValue) {
  subject_->set("DRIFTMARK_CONTRACT_TEST", "90.5");
  EXPECT_EQ(environment().variable("DRIFTMARK_CONTRACT_TEST"), "90.5");
}

TEST_P(EnvironmentContract, emptyValueIsPresent) {
  subject_->set("DRIFTMARK_CONTRACT_TEST", "");
  EXPECT_EQ(environment().variable("DRIFTMARK_CONTRACT_TEST"), "");
}

TEST_P(EnvironmentContract, valueKeepsEveryByte) {
  const std::string value = " spaces = kept\n\xc3\xa9\xff ";
  subject_->set("DRIFTMARK_CONTRACT_TEST", value);
  EXPECT_EQ(environment().variable("DRIFTMARK_CONTRACT_TEST"), value);
}

TEST_P(EnvironmentContract, nameIsComparedExactly) {
  subject_->set("DRIFTMARK_CONTRACT_TEST_LONGER", "other");
  subject_->unset("DRIFTMARK_CONTRACT_TEST");
  EXPECT_EQ(environment().variable("DRIFTMARK_CONTRACT_TEST"), std::nullopt);
  EXPECT_EQ(environment().variable("driftmark_contract_test_longer"), std::nullopt);
  subject_->unset("DRIFTMARK_CONTRACT_TEST_LONGER");
}

} // namespace driftmark::test
