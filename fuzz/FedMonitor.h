#pragma once

#include "core/MonitorTest.h"

#include <string>
#include <string_view>

namespace driftmark::fuzz {

/// A monitor on the test platform, fed by a target.
class FedMonitor : public test::MonitorTest {
public:
  explicit FedMonitor(const std::string& stallSeconds = "300") {
    platform.environment.set("DRIFTMARK_STALL_SECS", stallSeconds);
    start();
  }

  using MonitorTest::changes;
  using MonitorTest::full;
  using MonitorTest::globals;
  using MonitorTest::items;
  using MonitorTest::monitor;
  using MonitorTest::now;
  using MonitorTest::platform;

  /// Lets a child print, unless it is between its end and its restart.
  void feed(test::TestChild& child, std::string_view bytes) {
    if (!child.isRunning())
      return;
    child.print(bytes);
    platform.mainQueue.runAll();
  }

  /// Lets time pass.
  void advance(Seconds distance) {
    platform.mainQueue.advance(distance);
    platform.settle();
  }

  /// Sets the clock alone, forward or back.
  void jump(Seconds distance) { platform.clock.jump(distance); }

  /// The log without the lines about the child processes.
  test::Lines takeLog() {
    test::Lines lines = platform.systemLog.take();
    std::erase_if(lines, [](const std::string& line) {
      return line.starts_with("Driftmark: brctl monitor");
    });
    return lines;
  }

private:
  void TestBody() override {}
};

} // namespace driftmark::fuzz
