// What the survey of a large folder costs, and how long it blocks the main loop.

#include "BenchPlatform.h"
#include "Benches.h"
#include "HeapCounter.h"
#include "Stopwatch.h"
#include "SurveyTree.h"
#include "evict/Evictor.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/SystemRoot.h"
#include "platform/linux/desktop/FolderWalk.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "process/ChildProcess.h"
#include "process/Pipe.h"
#include "ui/StatusItemController.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <QCoreApplication>
#include <QTimer>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace driftmark::bench {
namespace {

constexpr std::size_t rounds = 7;
constexpr std::int64_t blockSize = 512;
constexpr const char* entryTitle = "Free Up Space…";

using SteadyClock = std::chrono::steady_clock;

/// Runs `find` and adds up the block counts that it prints, one per line.
std::int64_t blocksByFind(const SurveyTree& tree) {
  icloud::Pipe pipe = icloud::makePipe();
  icloud::Launch launch{"/usr/bin/find", {tree.path(), "-type", "f", "-printf", "%b\n"}, {}};
  launch.output = pipe.writing.get();
  icloud::ChildProcess find(launch);
  pipe.writing.reset();
  std::string text;
  std::array<char, 65536> bytes{};
  for (ssize_t count = 0; (count = read(pipe.reading.get(), bytes.data(), bytes.size())) > 0;)
    text.append(bytes.data(), static_cast<std::size_t>(count));
  if (const int status = find.wait(); status != 0)
    throw std::runtime_error("find ended with " + icloud::describeEnd(status));
  std::int64_t sum = 0;
  const char* const end = text.data() + text.size();
  for (const char* line = text.data(); line < end;) {
    std::int64_t blocks = 0;
    line = std::from_chars(line, end, blocks).ptr + 1;
    sum += blocks;
  }
  return sum;
}

/// Makes the system calls that a survey cannot do without, and nothing else: one for the blocks and
/// one for the state of each file.
std::int64_t blocksByCalls(const SurveyTree& tree) {
  std::int64_t sum = 0;
  std::array<char, 32> state{};
  walkFolder(tree.path().string(), [&](const FoundItem& item) {
    struct stat information {};
    if (fstatat(item.folder, item.name, &information, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(information.st_mode) &&
        lgetxattr(item.path.c_str(), LinuxCloudFiles::stateAttribute, state.data(), state.size()) >
            0)
      sum += information.st_blocks;
    return Walk::proceed;
  });
  return sum;
}

std::size_t bytesOf(const std::vector<std::string>& paths) {
  std::size_t bytes = 0;
  for (const std::string& path : paths)
    bytes += path.size();
  return bytes;
}

/// Measures the longest time between two beats on the event loop.
class LoopWatch {
public:
  LoopWatch() {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { beat(); });
    timer_.start(1);
  }

  void beat() {
    const auto now = SteadyClock::now();
    longest_ = std::max(longest_, std::chrono::duration<double, std::milli>(now - last_));
    last_ = now;
  }

  double longestMilliseconds() const { return longest_.count(); }

private:
  QTimer timer_;
  SteadyClock::time_point last_ = SteadyClock::now();
  std::chrono::duration<double, std::milli> longest_{0};
};

/// Chooses a folder at once and cancels the question that follows.
class CancellingUser final : public Dialogs {
public:
  CancellingUser(std::string folder, LoopWatch& watch)
      : folder_(std::move(folder)), watch_(watch) {}

  std::optional<std::size_t> runModal(const Alert& alert) override {
    watch_.beat();
    untilAsked_ = watch_.longestMilliseconds();
    question_ = alert.informativeText;
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    return 1;
  }
  std::optional<std::string> chooseFolder(const FolderPanel& /*panel*/) override { return folder_; }
  void orderFrontAboutPanel(const std::string& /*credits*/) override {}

  const std::string& question() const { return question_; }

  /// The longest time that the loop was blocked before the question, in milliseconds.
  double longestUntilAsked() const { return untilAsked_; }

private:
  std::string folder_;
  LoopWatch& watch_;
  std::string question_;
  double untilAsked_ = 0;
};

/// A menu bar that draws nothing.
class BlankStatusBar final : public StatusBar {
public:
  std::unique_ptr<StatusItem> makeStatusItem() override { return std::make_unique<Item>(build_); }

  void choose(std::string_view title) const {
    const Menu menu = build_();
    const auto found = std::ranges::find(menu, title, &MenuItem::title);
    if (found == menu.end())
      throw std::runtime_error("the menu has no such entry: " + std::string(title));
    found->action();
  }

private:
  class Item final : public StatusItem {
  public:
    explicit Item(std::function<Menu()>& build) : build_(build) {}
    void setSymbol(const Symbol& /*symbol*/, const std::string& /*fallback*/) override {}
    void setTitle(const std::string& /*title*/) override {}
    void setToolTip(const std::string& /*text*/) override {}
    void setMenu(std::function<Menu()> build, std::function<void()> /*willOpen*/) override {
      build_ = std::move(build);
    }
    void retitle(MenuItem::Tag /*tag*/, const std::string& /*title*/) override {}

  private:
    std::function<Menu()>& build_;
  };

  std::function<Menu()> build_;
};

/// The longest time that the loop is blocked, in milliseconds, from the choice of the folder to the
/// question.
double longestGap(LinuxPlatform& platform, const SurveyTree& tree) {
  BenchChildProcesses children;
  BlankStatusBar statusBar;
  BenchSystemLog log;
  LoopWatch watch;
  CancellingUser user(tree.path().string(), watch);
  const auto controller =
      StatusItemController::make(replaced(platform.ports(), children, statusBar, log, user));
  statusBar.choose(entryTitle);
  QCoreApplication::exec();
  if (!user.question().starts_with(std::to_string(SurveyTree::files) + " files"))
    throw std::runtime_error("the user was asked something else: " + user.question());
  return user.longestUntilAsked();
}

} // namespace

void benchSurvey(Figures& figures, std::ostream& notes) {
  const SurveyTree tree;
  LinuxPlatform platform(std::get<SystemRoot>(SystemRoot::of(BenchEnvironment())));
  const CloudFiles& cloudFiles = platform.ports().cloudFiles;

  Evictor::Survey survey;
  const auto heap = static_cast<double>(
      peakHeap([&] { survey = Evictor::survey(cloudFiles, tree.path().string()); }));
  if (survey.files.size() != SurveyTree::files || survey.bytes != blocksByFind(tree) * blockSize)
    throw std::runtime_error("the survey is wrong");
  figures["survey_heap_over_paths"] = heap / static_cast<double>(bytesOf(survey.files));

  std::vector<double> find;
  std::vector<double> calls;
  std::vector<double> surveys;
  std::vector<double> gaps;
  for (std::size_t round = 0; round < rounds; ++round) {
    find.push_back(seconds([&] { blocksByFind(tree); }));
    calls.push_back(seconds([&] { blocksByCalls(tree); }));
    surveys.push_back(seconds([&] { Evictor::survey(cloudFiles, tree.path().string()); }));
    gaps.push_back(longestGap(platform, tree));
  }
  figures["survey_calls_over_find"] = median(calls) / median(find);
  figures["survey_over_find"] = median(surveys) / median(find);
  figures["survey_main_loop_ms"] = median(gaps);
  notes << "survey: " << SurveyTree::files << " files in " << SurveyTree::folders
        << " folders, find " << median(find) << " s, survey " << median(surveys)
        << " s, longest block of all rounds " << *std::ranges::max_element(gaps) << " ms\n";
}

} // namespace driftmark::bench
