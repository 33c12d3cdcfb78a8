// The per-item feed: the monitor against the reference with regular expressions and hash maps.
//
// The input is what `brctl` prints, with commands in between: "|" ends a chunk, "^" and "&" let one
// and twenty seconds pass, "<" sets the clock back, "$" ends the child. A file exists when its path
// begins with "/kept".

#include "FedMonitor.h"
#include "Target.h"
#include "reference/TimedReference.h"

#include <algorithm>
#include <string>

namespace driftmark::fuzz {

namespace {

constexpr Seconds stalledAfter{30};

/// A monitor beside a reference that gets the same.
class Pair {
public:
  Pair() {
    for (const char* const path : {"/kept", "/kept/a", "/kept a"}) {
      monitor_.platform.fileSystem.add(FedMonitor::full(path));
      reference_.addFile(FedMonitor::full(path));
    }
  }

  /// What is printed while no child runs is lost.
  void print(std::string_view chunk) {
    if (!monitor_.items().isRunning())
      return;
    monitor_.feed(monitor_.items(), chunk);
    reference_.ingest(chunk);
    require(monitor_.takeLog() == reference_.takeLog(), "the log of a chunk differs");
    compare();
  }

  void obey(char command) {
    if (command == '^' || command == '&')
      advance(Seconds(command == '^' ? 1 : 20));
    if (command == '$' && monitor_.items().isRunning())
      monitor_.items().exit();
    if (command != '<')
      return;
    monitor_.jump(Seconds(-25));
    reference_.jump(Seconds(-25));
    compare();
  }

private:
  void advance(Seconds distance) {
    monitor_.advance(distance);
    reference_.advance(distance);
    test::Lines log = monitor_.takeLog();
    test::Lines expected = reference_.takeLog();
    std::sort(log.begin(), log.end());
    std::sort(expected.begin(), expected.end());
    require(log == expected, "the log of a sweep differs");
    compare();
  }

  void compare() const {
    const std::string different = test::difference(*monitor_.monitor, reference_);
    require(different.empty(), different + " differs");
    require(monitor_.changes == reference_.changes(), "the number of changes differs");
  }

  FedMonitor monitor_{"30"};
  test::TimedReference reference_{monitor_.now(), stalledAfter};
};

} // namespace

/// One monitor gets the chunks as they are cut, another one all that comes at the same time in one
/// chunk.
void check(std::string_view input) {
  Pair many;
  Pair one;
  std::string whole;
  forEachStep(input, "|^&<$", [&](std::string_view text, char command) {
    whole += text;
    many.print(text);
    if (command == '|')
      return;
    one.print(whole);
    whole.clear();
    many.obey(command);
    one.obey(command);
  });
}

} // namespace driftmark::fuzz
