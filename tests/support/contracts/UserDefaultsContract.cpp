#include "support/contracts/UserDefaultsContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(UserDefaultsContract);

TEST_P(UserDefaultsContract, nothingIsSetAtFirst) {
  EXPECT_EQ(userDefaults().string("Key"), std::nullopt);
  EXPECT_FALSE(userDefaults().boolean("Key"));
}

TEST_P(UserDefaultsContract, storedValueIsReadBack) {
  userDefaults().setBoolean("Key", true);
  EXPECT_TRUE(userDefaults().boolean("Key"));
  EXPECT_FALSE(userDefaults().boolean("Other"));
  userDefaults().setBoolean("Key", false);
  EXPECT_FALSE(userDefaults().boolean("Key"));
}

TEST_P(UserDefaultsContract, changesByUserAreVisibleAtOnce) {
  for (const std::string value : {"https://example.com/a b", "", "line\nend \"\\ \u2601"}) {
    subject_->setString("Address", value);
    EXPECT_EQ(userDefaults().string("Address"), value);
  }
}

TEST_P(UserDefaultsContract, valuesOfOtherKindCountAsNotSet) {
  userDefaults().setBoolean("Switch", true);
  subject_->setString("Address", "true");
  EXPECT_EQ(userDefaults().string("Switch"), std::nullopt);
  EXPECT_FALSE(userDefaults().boolean("Address"));
}

TEST_P(UserDefaultsContract, valueIsNotConverted) {
  for (const char* const yes : {"YES", "1"}) {
    subject_->setString("Switch", yes);
    EXPECT_FALSE(userDefaults().boolean("Switch")) << yes;
  }
  for (const int number : {0, 1}) {
    subject_->setNumber("Number", number);
    EXPECT_FALSE(userDefaults().boolean("Number")) << number;
    EXPECT_EQ(userDefaults().string("Number"), std::nullopt) << number;
  }
}

TEST_P(UserDefaultsContract, storingSettingKeepsOthers) {
  subject_->setString("Address", "x");
  userDefaults().setBoolean("One", true);
  userDefaults().setBoolean("Two", true);
  EXPECT_EQ(userDefaults().string("Address"), "x");
  EXPECT_TRUE(userDefaults().boolean("One"));
}

} // namespace driftmark::test
