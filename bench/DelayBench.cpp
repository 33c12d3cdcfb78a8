// What delayed tasks cost on the main queue.

#include "Benches.h"
#include "Stopwatch.h"
#include "platform/linux/runloop/LinuxMainQueue.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <vector>

#include <QCoreApplication>
#include <QEventLoop>

namespace driftmark::bench {
namespace {

/// Delays as the program uses them: a few, each for many tasks.
constexpr std::array<Seconds, 4> delays{Seconds(0), Seconds(0.001), Seconds(10), Seconds(60.5)};
constexpr std::size_t shortDelays = 2;

/// Seconds for so many tasks: those with a short delay run, the others are dropped with the queue.
double secondsFor(std::size_t tasks) {
  constexpr std::size_t rounds = 7;
  std::vector<double> times;
  for (std::size_t round = 0; round < rounds; ++round)
    times.push_back(seconds([&] {
      LinuxMainQueue queue;
      std::size_t ran = 0;
      for (std::size_t task = 0; task < tasks; ++task)
        queue.after(delays[task % delays.size()], [&] { ++ran; });
      while (ran < tasks / delays.size() * shortDelays)
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
