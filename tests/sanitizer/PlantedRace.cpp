// A program with a data race between a handler on the main thread and a background thread. It ends
// with status 0 and says so when nothing reports the race.

#include "platform/linux/runloop/LinuxBackgroundQueue.h"
#include "platform/linux/runloop/LinuxMainQueue.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <iostream>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>

#include <QApplication>
#include <QWidget>

namespace {

using namespace driftmark;

/// What both threads use.
struct Shared {
  int number = 0;
  std::array<char, 32> text{};

  void copy(std::string_view source) {
    std::ranges::copy(source.substr(0, text.size()), text.begin());
  }
};

/// A window whose painting calls back.
class Window final : public QWidget {
public:
  explicit Window(std::function<void()> onPaint) : onPaint_(std::move(onPaint)) {}

protected:
  void paintEvent(QPaintEvent* /*event*/) override { onPaint_(); }

private:
  const std::function<void()> onPaint_;
};

} // namespace

int main(int argc, char* argv[]) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  const std::string_view place = argc == 3 ? argv[1] : "";
  const std::string_view fault = argc == 3 ? argv[2] : "";
  if ((place != "task" && place != "paint") ||
      (fault != "write" && fault != "copy" && fault != "deletion" && fault != "none")) {
    std::cerr << "usage: planted_race task|paint write|copy|deletion|none\n";
    return 2;
  }

  auto shared = std::make_unique<Shared>();
  Shared& same = *shared;
  LinuxMainQueue mainQueue;
  const auto handle = [&] {
    if (fault == "deletion" || fault == "none")
      shared.reset();
    else if (fault == "copy")
      shared->copy(place);
    else
      ++shared->number;
    QCoreApplication::exit();
  };
  Window window(handle);
  const auto callHandler = [&] {
    if (place == "paint")
      window.show();
    else
      handle();
  };

  // Tells the order of the accesses to this program, but does not synchronise them.
  std::atomic<bool> accessed = false;
  LinuxBackgroundQueue background;
  const auto refusal = background.async(QualityOfService::userInitiated, [&] {
    if (fault == "copy")
      same.copy(fault);
    else
      ++same.number;
    if (fault == "none")
      mainQueue.async(callHandler);
    accessed.store(true, std::memory_order_relaxed);
  });
  if (refusal)
    return 1;
  if (fault != "none") {
    while (!accessed.load(std::memory_order_relaxed))
      std::this_thread::yield();
    mainQueue.async(callHandler);
  }
  QCoreApplication::exec();
  std::cout << "no race was reported\n";
}
