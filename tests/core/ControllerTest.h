#pragma once

#include "core/MonitorTest.h"
#include "ui/StatusItemController.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark::test {

/// The interface on the test platform; the tests print the lines of the monitors.
class ControllerTest : public MonitorTest {
protected:
  /// Shows the status item and clears the log.
  void show() {
    platform.fileSystem.pretendEverythingExists();
    controller = StatusItemController::make(platform.platform());
    platform.settle();
    platform.systemLog.take();
  }

  /// Print that a transfer is in flight: its start, or an update.
  void upload(const std::string& path, const std::string& percent = {}) {
    item(path, " \u2191 " + percent);
  }
  void download(const std::string& path, const std::string& percent = {}) {
    item(path, " \u2601 \u2193 " + percent);
  }

  /// Prints that the item is in sync, which completes its transfer.
  void finish(const std::string& path) { item(path, " \u2601"); }

  /// Makes `brctl status` print this report from now on, and lets the monitor read it.
  void confirm(const std::string& report) {
    platform.childProcesses.script(statusReport, report);
    global(fraction("0.5", "1"));
    platform.settle();
    global(fraction("1.0", "1"));
  }

  /// Opens the menu and delivers the quota that it requests.
  void open() {
    platform.statusBar.open();
    platform.settle();
  }

  /// The opened menu as text: a line for each item, "---" for a separator, labels in brackets,
  /// commands without an action in parentheses, a check mark in front.
  Lines menu() const {
    Lines lines;
    for (const MenuItem& item : platform.statusBar.menu())
      lines.push_back(text(item));
    return lines;
  }

  /// The item of the opened menu whose title begins with `title`. There must be one.
  const MenuItem& menuItem(std::string_view title) const {
    for (const MenuItem& item : platform.statusBar.menu())
      if (item.title.starts_with(title))
        return item;
    throw std::logic_error("the menu has no such item");
  }

  const TestStatusBar& statusBar() const { return platform.statusBar; }

  std::shared_ptr<StatusItemController> controller;

private:
  static std::string text(const MenuItem& item) {
    if (item.kind == MenuItem::Kind::separator)
      return "---";
    if (item.kind == MenuItem::Kind::label)
      return "[" + item.title + "]";
    if (item.kind == MenuItem::Kind::heading)
      return "[[" + item.title + "]]";
    return (item.isChecked ? "\u2713 " : "") +
           (item.action ? item.title : std::string("(").append(item.title).append(")"));
  }
};

} // namespace driftmark::test
