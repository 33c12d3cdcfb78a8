#include "support/contracts/BundleContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BundleContract);

TEST_P(BundleContract, pathIsAbsoluteWithoutTrailingSlash) {
  const std::string path = bundle().path();
  EXPECT_TRUE(path.starts_with('/')) << path;
  EXPECT_TRUE(path.ends_with(".app")) << path;
}

TEST_P(BundleContract, valuesAreThoseOfPropertyList) {
  EXPECT_EQ(bundle().identifier(), "com.example.program");
  EXPECT_EQ(bundle().information("CFBundleShortVersionString"), "1.2");
}

TEST_P(BundleContract, unknownKeysAreAbsent) {
  EXPECT_EQ(bundle().information("Missing"), std::nullopt);
  EXPECT_EQ(bundle().information(""), std::nullopt);
}

} // namespace driftmark::test
