#include "support/TextRepair.h"

#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

TEST(TextRepairTest, wellFormedTextStaysAsItIs) {
  for (const std::string& text : {""s, "plain"s, "a\0b"s, "\u00e9\u2601\U0001f4c4"s, "\u2601 end"s})
    EXPECT_EQ(wellFormed(text), text);
}

TEST(TextRepairTest, eachStrayByteIsReplaced) {
  EXPECT_EQ(wellFormed("\xff"), "\ufffd");
  EXPECT_EQ(wellFormed("caf\xe9 noir"), "caf\ufffd noir");
  EXPECT_EQ(wellFormed("\u2601\x81\x81z"), "\u2601\ufffd\ufffdz");
  EXPECT_EQ(wellFormed("a\xe2\x98"), "a\ufffd\ufffd");
  EXPECT_EQ(wellFormed("\xed\xa0\x80\u00e9"), "\ufffd\ufffd\ufffd\u00e9");
}

TEST(TextRepairTest, lineStaysALine) {
  EXPECT_EQ(oneLine("uploading caf\u00e9\tnoir \\n.pdf"), "uploading caf\u00e9\tnoir \\n.pdf");
  EXPECT_EQ(oneLine("a\nb\rc\x1b[31m\0\x7f end"s), "a\\nb\\rc\\x1b[31m\\x00\\x7f end");
  EXPECT_EQ(oneLine(""), "");
}

} // namespace
} // namespace driftmark::test
