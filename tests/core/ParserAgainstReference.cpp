#include "core/MonitorTest.h"
#include "core/ParserReference.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
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

/// Lines about few paths, so that their states meet, and now and then about anything.
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
  std::string folder_; ///< lines tend to stay in one
};

class ParserAgainstReferenceTest : public MonitorTest,
                                   public testing::WithParamInterface<unsigned> {
protected:
  /// The log without the lines about the children themselves.
  Lines takeModelLog() {
    Lines lines = takeLog();
    std::erase_if(lines, [](const std::string& line) {
      return line.starts_with("Driftmark: brctl monitor");
    });
    return lines;
  }

  /// Whether the monitor's model is the reference's.
  testing::AssertionResult agrees(const ParserReference& reference) const {
    const std::map<std::string, ActiveItem> active(monitor->active().begin(),
                                                   monitor->active().end());
    const auto sameTransfer = [](const auto& a, const auto& b) {
      return a.first == b.first && a.second.path == b.second.path &&
             a.second.direction == b.second.direction && a.second.percent == b.second.percent &&
             a.second.lastUpdate == b.second.lastUpdate;
    };
    if (!std::equal(active.begin(), active.end(), reference.active.begin(), reference.active.end(),
                    sameTransfer))
      return testing::AssertionFailure() << "active differs";
    if (std::map<std::string, std::string>(monitor->issues().begin(), monitor->issues().end()) !=
        reference.issues)
      return testing::AssertionFailure() << "issues differ";
    const auto sameEvent = [](const CompletedItem& a, const CompletedItem& b) {
      return a.path == b.path && a.kind == b.kind && a.date == b.date;
    };
    if (!std::equal(monitor->recent().begin(), monitor->recent().end(), reference.recent.begin(),
                    reference.recent.end(), sameEvent))
      return testing::AssertionFailure() << "recent differs";
    if (changes != reference.changes)
      return testing::AssertionFailure()
             << changes << " changes notified instead of " << reference.changes;
    return testing::AssertionSuccess();
  }
};

TEST_P(ParserAgainstReferenceTest, modelsAgreeAfterEveryChunk) {
  start();
  LineGenerator generator(GetParam());
  ParserReference reference(now());
  for (int number = 0; number < 150; ++number) {
    const std::string path = generator.path();
    exists(path);
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
    ASSERT_EQ(takeModelLog(), reference.log) << testing::PrintToString(recently);
    ASSERT_TRUE(agrees(reference)) << testing::PrintToString(recently);
    reference.log.clear();

    if (generator.oneIn(10)) {
      if (generator.oneIn(10))
        items().exit();
      static constexpr std::array<double, 7> distances{0.5, 2.9, 3.1, 10, 10, 29.5, 61};
      const Seconds distance{items().isRunning() ? distances.at(generator.below(distances.size()))
                                                 : 10};
      platform.mainQueue.advance(distance);
      reference.advance(distance);
      Lines log = takeModelLog();
      std::sort(log.begin(), log.end());
      std::sort(reference.log.begin(), reference.log.end());
      ASSERT_EQ(log, reference.log);
      ASSERT_TRUE(agrees(reference));
      reference.log.clear();
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
