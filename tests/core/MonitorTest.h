#pragma once

#include "monitor/SyncMonitor.h"
#include "support/TestPlatform.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

inline const Arguments itemMonitor{"monitor", "-i", "com.apple.CloudDocs"};
inline const Arguments globalMonitor{"monitor", "-g", "-i"};
inline const Arguments statusReport{"status"};
inline const Arguments quotaReport{"quota"};

using Lines = std::vector<std::string>;

/// Names the instances of a test after the name of their parameter.
inline constexpr auto caseName = [](const auto& info) { return info.param.name; };

/// A monitor on the test platform. Unless a test scripts them, `brctl status` and `brctl quota`
/// print nothing, so that a started monitor soon only waits for its two feeds.
class MonitorTest : public testing::Test {
protected:
  SyncMonitor::Ports ports() {
    return {.clock = platform.clock,
            .mainQueue = platform.mainQueue,
            .backgroundQueue = platform.backgroundQueue,
            .childProcesses = platform.childProcesses,
            .systemLog = platform.systemLog,
            .fileSystem = platform.fileSystem,
            .environment = platform.environment,
            .text = platform.text};
  }

  /// Makes the monitor, counting its change notifications.
  void make() {
    monitor = SyncMonitor::make(ports());
    monitor->onChange = [this] { ++changes; };
  }

  /// Makes and starts the monitor, and discards what the start logged and notified.
  void start() {
    make();
    monitor->start();
    platform.settle();
    platform.systemLog.take();
    changes = 0;
  }

  TestChild& items() const { return platform.childProcesses.child(itemMonitor); }
  TestChild& globals() const { return platform.childProcesses.child(globalMonitor); }

  /// Lets the per-item monitor print `bytes`. Returns how many changes were notified.
  int print(std::string_view bytes) {
    const int before = changes;
    items().print(bytes);
    platform.mainQueue.runAll();
    return changes - before;
  }

  /// Lets the per-item monitor print one line as through a terminal. Whether a change was notified.
  bool line(const std::string& text) { return print(text + "\r\n") == 1; }

  /// Lets the per-item monitor print a line about the item at `path`. Whether a change was
  /// notified.
  bool item(const std::string& path, const std::string& remainder) {
    return line(" o " + path + remainder);
  }

  /// Starts a transfer.
  void startUpload(const std::string& path, const std::string& percent = "") {
    item(path, " \u2191 " + percent);
  }
  void startDownload(const std::string& path, const std::string& percent = "") {
    item(path, " \u2601 \u2193 " + percent);
  }

  /// Starts a transfer and completes it.
  void completeUpload(const std::string& path) {
    startUpload(path);
    item(path, " \u2601");
  }
  void completeDownload(const std::string& path) {
    startDownload(path);
    item(path, " \u2601");
  }

  /// Lets time pass on the wall clock alone: nothing that waits runs.
  void jump(double seconds) { platform.clock.jump(Seconds(seconds)); }

  /// Lets the global monitor print one line. Whether a change was notified.
  bool global(const std::string& text) {
    const int before = changes;
    globals().print(text + "\r\n");
    platform.mainQueue.runAll();
    return changes - before == 1;
  }

  /// A line of the global monitor.
  static std::string fraction(const std::string& done, const std::string& total) {
    return "Fraction completed: " + done + " / Completed: 7 of " + total;
  }

  /// The path in the file system of a printed path.
  static std::string full(const std::string& path) {
    return "/Users/ada/Library/Mobile Documents" + path;
  }

  /// The transfer of a printed path; null when there is none.
  const ActiveItem* active(const std::string& path) const {
    return monitor->active().find(full(path));
  }

  /// The transfer of a printed path, which must be in flight.
  const ActiveItem& transfer(const std::string& path) const {
    const ActiveItem* const item = active(path);
    if (!item)
      throw std::runtime_error("no transfer of " + path);
    return *item;
  }

  /// The newest entry of the recent list, which must not be empty.
  const CompletedItem& latest() const { return monitor->recent().at(0); }

  /// The issue of a printed path; empty when there is none.
  std::string issue(const std::string& path) const {
    const auto found = monitor->issues().find(full(path));
    return found == monitor->issues().end() ? std::string() : found->second;
  }

  /// Adds the file of a printed path.
  void addFile(const std::string& path) { platform.fileSystem.add(full(path)); }

  Date now() const { return platform.clock.now(); }
  void advance(double seconds) { platform.mainQueue.advance(Seconds(seconds)); }
  Lines takeLog() { return platform.systemLog.take(); }

  TestPlatform platform;
  std::shared_ptr<SyncMonitor> monitor;
  int changes = 0;
};

} // namespace driftmark::test
