// How versions are compared.

#include "update/Version.h"

#include <gtest/gtest.h>

namespace driftmark {
namespace {

TEST(VersionTest, firstDifferenceDecides) {
  EXPECT_TRUE(isNewer("1.0.1", "1.0"));
  EXPECT_TRUE(isNewer("2", "1.99.99"));
  EXPECT_FALSE(isNewer("1.99.99", "2"));
  EXPECT_TRUE(isNewer("2.0.1", "1.5.9"));
  EXPECT_FALSE(isNewer("1.5.9", "2.0.1"));
}

TEST(VersionTest, piecesAreComparedAsNumbers) {
  EXPECT_TRUE(isNewer("1.10", "1.9"));
  EXPECT_FALSE(isNewer("1.9", "1.10"));
  EXPECT_FALSE(isNewer("1.010", "1.10"));
}

TEST(VersionTest, missingPiecesAreZero) {
  for (const char* const version : {"1.2", "1.2.0", "1.2.0.0"})
    for (const char* const same : {"1.2", "1.2.0", "1.2.0.0"})
      EXPECT_FALSE(isNewer(version, same)) << version << " " << same;
  EXPECT_TRUE(isNewer("1.2.0.1", "1.2"));
}

TEST(VersionTest, emptyPiecesAreDropped) {
  for (const char* const version : {"1..2", ".1.2", "1.2.", "..1...2.."}) {
    EXPECT_FALSE(isNewer(version, "1.2")) << version;
    EXPECT_FALSE(isNewer("1.2", version)) << version;
  }
}

TEST(VersionTest, pieceThatIsNotNumberCountsAsZero) {
  EXPECT_FALSE(isNewer("1.x", "1.0"));
  EXPECT_FALSE(isNewer("1.2-beta", "1.0"));
  EXPECT_TRUE(isNewer("1.1", "1.2-beta"));
  EXPECT_FALSE(isNewer("1. 2", "1.0"));
  EXPECT_FALSE(isNewer("1.2 ", "1.0"));
  EXPECT_FALSE(isNewer("1.0x2", "1.0"));
  EXPECT_FALSE(isNewer("1.9223372036854775808", "1.0"));
  EXPECT_TRUE(isNewer("1.9223372036854775807", "1.9223372036854775806"));
}

TEST(VersionTest, oneSignIsPartOfNumber) {
  EXPECT_FALSE(isNewer("1.-1", "1"));
  EXPECT_TRUE(isNewer("1", "1.-1"));
  EXPECT_FALSE(isNewer("1.+2", "1.2"));
  EXPECT_FALSE(isNewer("1.2", "1.+2"));
  EXPECT_FALSE(isNewer("1.++2", "1.0"));
  EXPECT_FALSE(isNewer("1.-", "1"));
  EXPECT_FALSE(isNewer("1", "1.-"));
}

TEST(VersionTest, emptyVersionIsAllZeros) {
  EXPECT_FALSE(isNewer("", "0"));
  EXPECT_FALSE(isNewer("", ""));
  EXPECT_FALSE(isNewer("...", "0.0"));
  EXPECT_TRUE(isNewer("1", ""));
  EXPECT_FALSE(isNewer("0", ""));
  EXPECT_TRUE(isNewer("0.0.1", "0"));
}

} // namespace
} // namespace driftmark
