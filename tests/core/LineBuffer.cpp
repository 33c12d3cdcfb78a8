#include "monitor/LineBuffer.h"

#include "support/HeapInUse.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> linesOf(LineBuffer& buffer, std::string_view chunk) {
  std::vector<std::string> lines;
  std::vector<std::string_view> views;
  bool finished = false;
  buffer.append(
      chunk,
      [&](std::string_view line) {
        EXPECT_FALSE(finished);
        views.push_back(line);
        lines.emplace_back(line);
      },
      [&] {
        EXPECT_FALSE(finished);
        finished = true;
        EXPECT_TRUE(std::equal(views.begin(), views.end(), lines.begin(), lines.end()));
      });
  EXPECT_EQ(finished, !lines.empty());
  return lines;
}

TEST(LineBufferTest, unfinishedLineWaitsForTheNextChunk) {
  LineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "ab"), IsEmpty());
  EXPECT_THAT(linesOf(buffer, "c\r\nd\r\n"), ElementsAre("abc\r", "d\r"));
  EXPECT_THAT(linesOf(buffer, "e\n\nf"), ElementsAre("e", ""));
  EXPECT_THAT(linesOf(buffer, "\n"), ElementsAre("f"));
  EXPECT_THAT(linesOf(buffer, "\n"), ElementsAre(""));
  EXPECT_THAT(linesOf(buffer, ""), IsEmpty());
}

TEST(LineBufferTest, anyOtherByteBelongsToItsLine) {
  LineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "\r\0\xff\x1b[\r\n"s), ElementsAre("\r\0\xff\x1b[\r"s));
}

TEST(LineBufferTest, everyCutOfAStreamGivesTheSameLines) {
  const std::string stream = "one\r\n\ntwo\nthree four\r\n\r\nfive";
  LineBuffer whole;
  const std::vector<std::string> expected = linesOf(whole, stream);
  for (std::size_t size = 1; size <= stream.size(); ++size) {
    LineBuffer buffer;
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < stream.size(); at += size)
      for (std::string& line : linesOf(buffer, std::string_view(stream).substr(at, size)))
        lines.push_back(std::move(line));
    EXPECT_EQ(lines, expected) << size;
  }
}

TEST(LineBufferTest, hugeLineInSmallChunksIsKeptWhole) {
  LineBuffer buffer;
  const std::string chunk(640, 'x');
  std::size_t size = 0;
  for (; size < std::size_t{2} << 20; size += chunk.size())
    ASSERT_THAT(linesOf(buffer, chunk), IsEmpty());
  const auto lines = linesOf(buffer, "\nnext\n");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0], std::string(size, 'x'));
  EXPECT_EQ(lines[1], "next");
}

TEST(LineBufferTest, memoryOfAHugeLineIsGivenBack) {
  LineBuffer buffer;
  const std::string chunk(std::size_t{16} << 20, 'x');
  const std::size_t before = heapInUse();
  std::size_t length = 0;
  const auto append = [&](std::string_view bytes) {
    buffer.append(
        bytes, [&](std::string_view line) { length = line.size(); }, [] {});
  };
  append(chunk);
  EXPECT_GE(heapInUse(), before + chunk.size());
  append("\n");
  EXPECT_EQ(length, chunk.size());
  EXPECT_LT(heapInUse(), before + 65536);
}

} // namespace
} // namespace driftmark::test
