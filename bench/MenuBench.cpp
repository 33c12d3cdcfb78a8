// How often the menu bar item is drawn, and how fast its menu opens.

#include "BenchPlatform.h"
#include "Benches.h"
#include "Corpus.h"
#include "Stopwatch.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/SystemRoot.h"
#include "platform/linux/menubar/LinuxStatusItem.h"
#include "replay/CaptureRoot.h"
#include "ui/StatusItemController.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <QApplication>
#include <QMouseEvent>
#include <QTimer>

namespace driftmark::bench {
namespace {

constexpr std::size_t quietLines = 100'000;
constexpr std::size_t listedPaths = 1'000'000;
constexpr std::size_t minOpenings = 300;

using SteadyClock = std::chrono::steady_clock;

/// A menu bar that gives access to its item.
class WatchedStatusBar final : public StatusBar {
public:
  std::unique_ptr<StatusItem> makeStatusItem() override {
    auto item = std::make_unique<LinuxStatusItem>();
    item_ = item.get();
    return item;
  }

  /// The item made last.
  LinuxStatusItem& item() { return *item_; }

private:
  LinuxStatusItem* item_ = nullptr;
};

class RootedEnvironment final : public BenchEnvironment {
public:
  explicit RootedEnvironment(std::string root) : root_(std::move(root)) {}
  std::optional<std::string> variable(const std::string& name) const override {
    return name == SystemRoot::variableName ? std::optional(root_) : std::nullopt;
  }

private:
  std::string root_;
};

SystemRoot systemRoot(const CaptureRoot& root) {
  return std::get<SystemRoot>(SystemRoot::of(RootedEnvironment(root.path().string())));
}

void drawPending() {
  for (int i = 0; i < 10; ++i)
    QCoreApplication::processEvents();
}

int drawingsWithoutChange() {
  const CaptureRoot root;
  LinuxPlatform platform(systemRoot(root));
  BenchChildProcesses children;
  WatchedStatusBar statusBar;
  BenchSystemLog log;
  const auto controller = StatusItemController::make(
      replaced(platform.ports(), children, statusBar, log, platform.ports().dialogs));
  drawPending();
  const MenuBarStrip& strip = statusBar.item().strip();
  const int before = strip.paintCount();
  if (before == 0)
    throw std::runtime_error("the strip was not drawn at all");

  const Corpus listing = makeListing(quietLines, "\r\n");
  for (std::size_t at = 0; at < listing.bytes.size(); at += ChildProcesses::maxChunkSize) {
    children.feed(std::string_view(listing.bytes).substr(at, ChildProcesses::maxChunkSize));
    QCoreApplication::processEvents();
  }
  drawPending();
  return strip.paintCount() - before;
}

/// Opens the menu by clicks repeatedly, and measures the time from each click until the menu is
/// drawn.
class Opener final : public QObject {
public:
  explicit Opener(LinuxStatusItem& item) : item_(item) {
    qApp->installEventFilter(this);
    click();
  }

  const std::vector<double>& milliseconds() const { return milliseconds_; }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint && isOpening_ && watched == item_.menu()) {
      isOpening_ = false;
      QMetaObject::invokeMethod(
          this, [this] { opened(); }, Qt::QueuedConnection);
    }
    return false;
  }

private:
  void click() {
    isOpening_ = true;
    since_ = SteadyClock::now();
    const QPointF place(item_.strip().rect().center());
    QCoreApplication::postEvent(&item_.strip(),
                                new QMouseEvent(QEvent::MouseButtonPress, place,
                                                item_.strip().mapToGlobal(place), Qt::LeftButton,
                                                Qt::LeftButton, Qt::NoModifier));
  }

  void opened() {
    const std::chrono::duration<double, std::milli> time = SteadyClock::now() - since_;
    milliseconds_.push_back(time.count());
    item_.menu()->close();
    QTimer::singleShot(1, this, [this] { click(); });
  }

  LinuxStatusItem& item_;
  bool isOpening_ = false;
  SteadyClock::time_point since_;
  std::vector<double> milliseconds_;
};

/// Hides the end of the item monitor from the core, which would start it again.
class RunOnce final : public BenchChildProcesses {
public:
  RunOnce(ChildProcesses& children, std::function<void()> onEnd)
      : children_(children), onEnd_(std::move(onEnd)) {}

  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override {
    if (command.arguments.at(1) != "-i")
      return BenchChildProcesses::spawn(command, std::move(onData), std::move(onExit));
    return children_.spawn(command, std::move(onData), onEnd_);
  }

private:
  ChildProcesses& children_;
  const std::function<void()> onEnd_;
};

/// The times in milliseconds that the menu took to open during one listing of the drive.
std::vector<double> openDuringListing(const CaptureRoot& root) {
  LinuxPlatform platform(systemRoot(root));
  RunOnce children(platform.ports().childProcesses, [] { QCoreApplication::quit(); });
  WatchedStatusBar statusBar;
  BenchSystemLog log;
  const auto controller = StatusItemController::make(
      replaced(platform.ports(), children, statusBar, log, platform.ports().dialogs));
  const Opener opener(statusBar.item());
  QCoreApplication::exec();
  return opener.milliseconds();
}

/// Milliseconds that the menu takes to be built, as a value, with so many transfers in flight.
double buildMilliseconds(std::size_t transfers) {
  constexpr std::size_t builds = 101;
  const CaptureRoot root;
  LinuxPlatform platform(systemRoot(root));
  BenchChildProcesses children;
  WatchedStatusBar statusBar;
  BenchSystemLog log;
  const auto controller = StatusItemController::make(
      replaced(platform.ports(), children, statusBar, log, platform.ports().dialogs));
  std::string lines;
  for (std::size_t number = 0; number < transfers; ++number)
    lines += " o /com~apple~CloudDocs/File " + std::to_string(number) + ".mov ↑ 1%\r\n";
  children.feed(lines);
  std::vector<double> times;
  for (std::size_t build = 0; build < builds; ++build)
    times.push_back(seconds([&] {
      if (controller->menuNeedsUpdate().size() < 15)
        throw std::runtime_error("the transfers are not in the menu");
    }));
  return median(times) * 1e3;
}

double percentile99(std::vector<double> values) {
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(values.size() * 99 / 100);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

} // namespace

void benchMenu(Figures& figures, std::ostream& notes) {
  figures["redraws_without_change"] = drawingsWithoutChange();

  figures["menu_at_100000_active_ms"] = buildMilliseconds(100'000);

  const CaptureRoot root;
  root.playText(makeListing(listedPaths, "\n").bytes);
  std::vector<double> times;
  std::size_t listings = 0;
  for (; times.size() < minOpenings; ++listings) {
    const std::vector<double> more = openDuringListing(root);
    if (more.empty())
      throw std::runtime_error("the menu was not opened during a listing");
    times.insert(times.end(), more.begin(), more.end());
  }
  figures["menu_open_ms_under_flood"] = percentile99(times);
  notes << "menu: opened " << times.size() << " times during " << listings << " listings of "
        << listedPaths << " paths, median " << median(times) << " ms\n";
}

} // namespace driftmark::bench
