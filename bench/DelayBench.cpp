// What delayed tasks cost on the main queue.

#include "Benches.h"
#include "Random.h"
#include "Stopwatch.h"
#include "platform/linux/runloop/LinuxMainQueue.h"

#include <ostream>
#include <vector>

#include <QCoreApplication>
#include <QEventLoop>

namespace driftmark::bench {
namespace {

/// Seconds for so many tasks: half of them are due within a millisecond, in any order, and run; the
/// others wait for about an hour and are dropped with the queue.
double secondsFor(std::size_t tasks) {
  constexpr std::size_t rounds = 7;
  constexpr std::size_t different = 1000;
  constexpr Seconds microsecond{1e-6};
  constexpr Seconds hour{3600};
  std::vector<double> times;
  for (std::size_t round = 0; round < rounds; ++round)
    times.push_back(seconds([&] {
      Random random(round);
      LinuxMainQueue queue;
      std::size_t ran = 0;
      for (std::size_t task = 0; task < tasks; ++task)
        queue.after(microsecond * static_cast<double>(random.below(different)) +
                        (task % 2 == 0 ? Seconds(0) : hour),
                    [&] { ++ran; });
      while (ran < tasks / 2)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }));
  return median(times);
}

} // namespace

void benchDelays(Figures& figures, std::ostream& notes) {
  const double few = secondsFor(20'000);
  const double many = secondsFor(200'000);
  figures["delayed_200000_over_20000"] = many / few;
  notes << "microseconds a delayed task: 20,000 tasks " << few * 1e6 / 20'000 << ", 200,000 "
        << many * 1e6 / 200'000 << '\n';
}

} // namespace driftmark::bench
