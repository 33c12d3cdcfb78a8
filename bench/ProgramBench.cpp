// What the program costs when it starts and while it idles.

#include "Benches.h"
#include "Stopwatch.h"
#include "demo/Sandbox.h"
#include "process/ChildProcess.h"
#include "process/Pipe.h"
#include "process/ProcessCost.h"

#include <chrono>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace driftmark::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds idleTime{30};
constexpr std::chrono::seconds settlingTime{3};
constexpr std::chrono::seconds timeout{60};
constexpr std::chrono::seconds gracePeriod{5};
constexpr std::size_t startCount = 15;

constexpr const char* quietScenario = "title \"Nothing\"\n"
                                      "quota 48GB\n"
                                      "files 20 \"Letters/Letter {n}.pages\" 24KB\n"
                                      "at 60m end\n";

/// A child and one text to wait for in its output.
class WatchedChild {
public:
  WatchedChild(icloud::Launch launch, bool readsErrors, std::string awaited)
      : WatchedChild(std::move(launch), readsErrors, std::move(awaited), icloud::makePipe()) {}

  /// Reads until a line contains the text. Throws std::runtime_error on a timeout.
  void await() {
    while (!isSeen_) {
      if (lines_.descriptor() < 0 || !icloud::isReadableWithin(lines_.descriptor(), timeout))
        throw std::runtime_error("timed out waiting for a line with: " + awaited_);
      lines_.read();
    }
  }
  icloud::ChildProcess& process() { return process_; }

private:
  WatchedChild(icloud::Launch launch, bool readsErrors, std::string awaited, icloud::Pipe pipe)
      : awaited_(std::move(awaited)),
        lines_(std::move(pipe.reading),
               [this](const std::string& line) {
                 isSeen_ = isSeen_ || line.find(awaited_) != std::string::npos;
               }),
        process_(withOutput(std::move(launch), readsErrors, pipe.writing.get())) {}

  static icloud::Launch withOutput(icloud::Launch launch, bool readsErrors, int pipe) {
    launch.output = pipe;
    if (readsErrors)
      launch.error = pipe;
    return launch;
  }

  bool isSeen_ = false;
  std::string awaited_;
  icloud::LineReader lines_;
  icloud::ChildProcess process_;
};

/// A simulated iCloud in which nothing happens.
class QuietSandbox {
public:
  QuietSandbox()
      : sandbox_(ICLOUD_TOOLS),
        bird_(
            {sandbox_.root().bird(), {"--home", sandbox_.home(), "--scenario", newScenario()}, {}},
            true, " ready") {
    bird_.await();
    program_ = sandbox_.programLaunch(DRIFTMARK_PROGRAM, icloud::Screen::memory);
  }

  const icloud::Launch& program() const { return program_; }

  /// A bare program with the same environment.
  icloud::Launch bare(std::vector<std::string> arguments = {}) const {
    icloud::Launch launch = program_;
    launch.program = BARE_PROGRAM;
    launch.arguments = std::move(arguments);
    return launch;
  }

private:
  fs::path newScenario() const {
    fs::path file = sandbox_.folder() / "quiet.scenario";
    std::ofstream(file) << quietScenario;
    return file;
  }

  icloud::Sandbox sandbox_;
  WatchedChild bird_;
  icloud::Launch program_;
};

/// The time from the launch to the event that the probe waits for, in seconds.
double startTime(icloud::Launch launch, const char* awaited) {
  launch.environment["QT_PLUGIN_PATH"] = PROBE_PLUGINS;
  launch.environment["QT_QPA_GENERIC_PLUGINS"] = "startprobe";
  launch.environment["DRIFTMARK_PROBE"] = awaited;
  const icloud::Pipe unread = icloud::makePipe();
  launch.error = unread.writing.get();
  const auto start = std::chrono::steady_clock::now();
  WatchedChild started(std::move(launch), false, "");
  started.await();
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  started.process().end(gracePeriod);
  return time.count();
}

void benchStart(const QuietSandbox& sandbox, Figures& figures, std::ostream& notes) {
  std::vector<double> program;
  std::vector<double> bare;
  for (std::size_t i = 0; i <= startCount; ++i) {
    const double one = startTime(sandbox.program(), "drawing");
    const double other = startTime(sandbox.bare(), "loop");
    if (i == 0)
      continue; // the first start reads the libraries from the disk
    program.push_back(one);
    bare.push_back(other);
  }
  figures["start_over_bare"] = median(program) / median(bare);
  notes << "start: program " << median(program) * 1e3 << " ms, bare " << median(bare) * 1e3
        << " ms\n";
}

/// Measures the memory before and after the first check for updates, and the cost of idling after
/// it.
void benchIdle(const QuietSandbox& sandbox, Figures& figures, std::ostream& notes) {
  WatchedChild program(sandbox.program(), true, "update check failed");
  const icloud::ChildProcess bare(sandbox.bare());
  const icloud::ChildProcess window(sandbox.bare({"window"}));
  const pid_t process = program.process().identifier();
  std::this_thread::sleep_for(settlingTime);
  const double memory = icloud::residentMemory(process);
  const double bareMemory = icloud::residentMemory(bare.identifier());
  figures["idle_rss_over_bare"] = memory / bareMemory;
  figures["window_rss_over_bare"] = icloud::residentMemory(window.identifier()) / bareMemory;
  notes << "idle: program " << memory / 1024 << " MiB, bare " << bareMemory / 1024 << " MiB\n";

  program.await();
  std::this_thread::sleep_for(settlingTime);
  const icloud::ProcessCost before = icloud::costOf(process);
  std::this_thread::sleep_for(idleTime);
  const icloud::ProcessCost after = icloud::costOf(process);
  figures["idle_cpu_ms_30s"] = static_cast<double>(after.nanoseconds - before.nanoseconds) / 1e6;
  figures["idle_switches_30s"] =
      static_cast<double>(after.voluntarySwitches - before.voluntarySwitches);
  figures["rss_after_check_over_bare"] = icloud::residentMemory(process) / bareMemory;
  program.process().end(gracePeriod);
}

} // namespace

void benchProgram(Figures& figures, std::ostream& notes) {
  const QuietSandbox sandbox;
  benchStart(sandbox, figures, notes);
  benchIdle(sandbox, figures, notes);
}

} // namespace driftmark::bench
