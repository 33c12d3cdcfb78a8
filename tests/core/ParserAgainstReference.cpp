#include "core/MonitorTest.h"
#include "reference/TimedReference.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <string>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

#ifdef DRIFTMARK_SANITIZED
constexpr int linesPerSeed = 6000;
#else
constexpr int linesPerSeed = 60000;
#endif

/// Generates lines about few paths, so that each path has many states, and sometimes any other
/// line.
class LineGenerator {
public:
  explicit LineGenerator(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return random_() % limit; }
  bool oneIn(std::size_t count) { return below(count) == 0; }

  std::string path() {
    static const std::vector<std::string> folders{
        "",      "",          "/a",       "/a",          "/a",         "/a/b",        "/a b",
        "/.hid", "/.Trash",   "/x.Trash", "/a/.Trash-1", "/caf\u00e9", "/cafe\u0301", "//a",
        "/a/",   "/a \u2191", "/\u2193"};
    static const std::vector<std::string> names{"/f",
                                                "/g",
                                                "/h",
                                                "/f g.txt",
                                                "/f ",
                                                "/f/",
                                                "/",
                                                "/.x",
                                                "/f\r",
                                                "/\u2601",
                                                "/a\u2601b",
                                                "/\u2191",
                                                "/a \u2191",
                                                "/a \u2193 b",
                                                "/50%",
                                                "/x\0y"s,
                                                "/error",
                                                "/not downloaded",
                                                "/\u5199\u771f",
                                                "/ o /f",
                                                "/f.Trash",
                                                "/Thing.txt"};
    if (oneIn(2))
      folder_ = folders[below(folders.size())];
    return folder_ + names[below(oneIn(2) ? 4 : names.size())];
  }

  std::string remainder() {
    static const std::vector<std::string> common{
        " \u2601", " \u2601", "", " \u2601 not downloaded", " \u2191 7%", " \u2601 \u2193 12.5%"};
    static const std::vector<std::string> rare{" \u2601 waiting",
                                               " \u2601 Upload Error 28",
                                               " \u2601 Upload Error 29",
                                               " \u2601Conflict",
                                               " \u2601 \u2193",
                                               " \u2191 ",
                                               " \u2191",
                                               " \u2193 5%",
                                               " \u2601 \u2193\u2191 1.2.3%",
                                               " \u2601 \u2191 99.99%",
                                               " \u2601 ",
                                               " \u2601 \t",
                                               " \u2601\r",
                                               " \u2601\r ",
                                               "  \u2601",
                                               "\u2601",
                                               " \u2601\u2601",
                                               " \u2601 \u2601",
                                               " \u2601 not downloaded now",
                                               " \u2601  not downloaded",
                                               " \u2601 not downloaded ",
                                               " \u2601 NOT DOWNLOADED",
                                               " not downloaded",
                                               " \u2601 \u2193 5.%",
                                               " \u2601 \ufe0f",
                                               " \u2602"};
    return oneIn(3) ? rare[below(rare.size())] : common[below(common.size())];
  }

  std::string line() {
    std::string line = " o " + path() + remainder();
    if (oneIn(12))
      line.insert(below(line.size() + 1), colour());
    if (oneIn(30))
      line.insert(0, oneIn(2) ? "\r" : colour());
    if (oneIn(30))
      line.erase(below(line.size()), 1);
    if (oneIn(30))
      line.insert(below(line.size() + 1), 1, static_cast<char>(below(256)));
    if (oneIn(40))
      line = "header " + line;
    return line + (oneIn(8) ? "\n" : oneIn(12) ? "\r\r\n" : "\r\n");
  }

private:
  std::string colour() {
    static const std::vector<std::string> colours{"\x1b[0m", "\x1b[1;32m", "\x1b[m",
                                                  "\x1b[2K", "\x1b",       "\x1b[1\x1b[0mm"};
    return colours[below(colours.size())];
  }

  std::mt19937 random_;
  std::string folder_; ///< of the next lines, mostly
};

class ParserAgainstReferenceTest : public MonitorTest,
                                   public testing::WithParamInterface<unsigned> {
protected:
  /// The log without the lines about the child processes.
  Lines takeModelLog() {
    Lines lines = takeLog();
    std::erase_if(lines, [](const std::string& line) {
      return line.starts_with("Driftmark: brctl monitor");
    });
    return lines;
  }
};

TEST_P(ParserAgainstReferenceTest, modelsAgreeAfterEveryChunk) {
  start();
  LineGenerator generator(GetParam());
  TimedReference reference(now());
  for (int number = 0; number < 150; ++number) {
    const std::string path = generator.path();
    addFile(path);
    reference.addFile(full(path));
  }

  std::string output;
  std::string recently;
  for (int lines = 0; lines < linesPerSeed;) {
    for (std::size_t count = 1 + generator.below(5); count > 0; --count, ++lines)
      output += generator.line();
    const std::string chunk = output.substr(0, 1 + generator.below(output.size()));
    output.erase(0, chunk.size());
    recently.erase(0, recently.size() > 600 ? chunk.size() : 0).append(chunk);
    items().print(chunk);
    platform.mainQueue.runAll();
    reference.ingest(chunk);
    ASSERT_EQ(takeModelLog(), reference.takeLog()) << testing::PrintToString(recently);
    ASSERT_EQ(difference(*monitor, reference), "") << testing::PrintToString(recently);
    ASSERT_EQ(changes, reference.changes()) << testing::PrintToString(recently);

    if (generator.oneIn(10)) {
      if (generator.oneIn(10))
        items().exit();
      static constexpr std::array<double, 7> distances{0.5, 2.9, 3.1, 10, 10, 29.5, 61};
      const Seconds distance{items().isRunning() ? distances.at(generator.below(distances.size()))
                                                 : 10};
      platform.mainQueue.advance(distance);
      reference.advance(distance);
      Lines log = takeModelLog();
      Lines expected = reference.takeLog();
      std::sort(log.begin(), log.end());
      std::sort(expected.begin(), expected.end());
      ASSERT_EQ(log, expected);
      ASSERT_EQ(difference(*monitor, reference), "");
      ASSERT_EQ(changes, reference.changes());
    }
  }
  EXPECT_GT(monitor->tally().transfersFinished, 100U);
  EXPECT_GT(monitor->tally().evictions, 100U);
  EXPECT_GT(monitor->tally().downloadsCancelled, 100U);
  EXPECT_GT(monitor->tally().issuesRaised, 100U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ParserAgainstReferenceTest, testing::Range(1U, 7U));

} // namespace
} // namespace driftmark::test
