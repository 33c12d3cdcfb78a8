// What a line costs on its path from a chunk to the model.

#include "BenchPlatform.h"
#include "Benches.h"
#include "Corpus.h"
#include "HeapCounter.h"
#include "Stopwatch.h"
#include "monitor/SyncMonitor.h"
#include "reference/ReferenceMonitor.h"

#include <cstring>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace driftmark::bench {
namespace {

constexpr std::size_t million = 1'000'000;
constexpr std::size_t rounds = 7;
constexpr std::size_t smallChunk = 640;

/// A fresh monitor with its platform.
struct Subject {
  Subject() {
    monitor->onChange = [this] { ++changes; };
    monitor->start();
  }
  void feed(std::string_view bytes, std::size_t chunk = ChildProcesses::maxChunkSize) const {
    platform.children.feed(bytes, chunk);
  }

  BenchPlatform platform;
  std::shared_ptr<SyncMonitor> monitor = SyncMonitor::make(platform.ports);
  std::size_t changes = 0;
};

std::size_t countNewlines(std::string_view bytes) {
  std::size_t count = 0;
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while ((at = static_cast<const char*>(
              std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) != nullptr) {
    ++count;
    ++at;
  }
  return count;
}

/// The reference monitor, fed like the real one.
struct Baseline {
  void feed(std::string_view bytes, std::size_t chunk = ChildProcesses::maxChunkSize) {
    for (std::size_t at = 0; at < bytes.size(); at += chunk)
      changes += monitor.ingest(bytes.substr(at, chunk)) ? 1 : 0;
  }

  BenchPlatform platform;
  ReferenceMonitor monitor{platform.clock, platform.log, platform.disk.homeDirectory()};
  std::size_t changes = 0;
};

void requireSameModel(const Subject& subject, const Baseline& baseline) {
  const auto require = [](bool same, const char* what) {
    if (!same)
      throw std::runtime_error(std::string("the two monitors differ in ") + what);
  };
  const SyncMonitor& left = *subject.monitor;
  const ReferenceMonitor& right = baseline.monitor;

  require(left.active().size() == right.active().size(), "the number of active transfers");
  for (const auto& [path, item] : right.active()) {
    const ActiveItem* const found = left.active().find(path);
    require(found && found->path == path && found->direction == item.direction &&
                found->percent == item.percent,
            "an active transfer");
  }
  require(left.issues().size() == right.issues().size(), "the number of issues");
  for (const auto& [path, text] : right.issues()) {
    const auto found = left.issues().find(path);
    require(found != left.issues().end() && found->second == text, "an issue");
  }
  require(left.recent().size() == right.recent().size(), "the length of the recent list");
  for (std::size_t i = 0; i < right.recent().size(); ++i)
    require(left.recent()[i].path == right.recent()[i].path &&
                left.recent()[i].kind == right.recent()[i].kind,
            "a recent event");
  require(subject.changes == baseline.changes, "the number of changes");
}

} // namespace

void benchIngest(Figures& figures, std::ostream& notes) {
  const Corpus corpus = makeCorpus(million);
  const std::string other = shuffled(corpus);
  notes << "corpus: " << corpus.lines << " lines, " << corpus.bytes.size() / corpus.lines
        << " bytes each; " << corpus.paths << " paths, " << corpus.pathBytes / corpus.paths
        << " bytes each, "
        << static_cast<double>(corpus.paths) / static_cast<double>(corpus.folders)
        << " files a folder\n";

  std::vector<double> scan;
  std::vector<double> pipeline;
  std::vector<double> secondPass;
  std::vector<double> shuffledPass;
  std::vector<double> freshShuffled;
  std::vector<double> smallChunks;
  std::vector<double> regex;
  const auto timeScan = [&] {
    scan.push_back(seconds([&] {
      if (countNewlines(corpus.bytes) != corpus.lines)
        throw std::runtime_error("the corpus has the wrong number of lines");
    }));
  };

  Subject().feed(corpus.bytes);
  for (std::size_t round = 0; round < rounds; ++round) {
    timeScan();
    Subject large;
    pipeline.push_back(seconds([&] { large.feed(corpus.bytes); }));

    if (round % 3 == 0) {
      Baseline baseline;
      regex.push_back(seconds([&] { baseline.feed(corpus.bytes); }));
      requireSameModel(large, baseline);
    }

    timeScan();
    secondPass.push_back(seconds([&] { large.feed(corpus.bytes); }));
    timeScan();
    shuffledPass.push_back(seconds([&] { large.feed(other); }));

    timeScan();
    const Subject shuffledFirst;
    freshShuffled.push_back(seconds([&] { shuffledFirst.feed(other); }));
    timeScan();
    const Subject small;
    smallChunks.push_back(seconds([&] { small.feed(corpus.bytes, smallChunk); }));

    if (round == 0) {
      Baseline baseline;
      baseline.feed(other);
      requireSameModel(shuffledFirst, baseline);
      Baseline inSmallChunks;
      inSmallChunks.feed(corpus.bytes, smallChunk);
      requireSameModel(small, inSmallChunks);
    }
  }

  const double scanTime = median(scan);
  const double pipelineTime = median(pipeline);
  figures["pipeline_over_memchr"] = pipelineTime / scanTime;
  figures["second_pass_over_memchr"] = median(secondPass) / scanTime;
  figures["second_pass_shuffled_over_memchr"] = median(shuffledPass) / scanTime;
  figures["first_pass_shuffled_over_memchr"] = median(freshShuffled) / scanTime;
  figures["speedup_over_regex"] = median(regex) / pipelineTime;
  figures["small_chunks_over_large"] = median(smallChunks) / pipelineTime;

  const auto perLine = [&](double time) { return time * 1e9 / static_cast<double>(corpus.lines); };
  notes << "nanoseconds a line: newline scan " << perLine(scanTime) << ", first pass "
        << perLine(pipelineTime) << ", second pass " << perLine(median(secondPass)) << ", shuffled "
        << perLine(median(shuffledPass)) << ", small chunks " << perLine(median(smallChunks))
        << ", regular expressions " << perLine(median(regex)) << '\n';
}

void benchKnownState(Figures& figures, std::ostream& notes) {
  const Corpus listing = makeListing(million, "\r\n");
  const Subject subject;
  const auto peak = static_cast<double>(peakHeap([&] { subject.feed(listing.bytes); }));
  figures["known_state_over_raw"] = peak / static_cast<double>(listing.pathBytes);
  notes << "known paths: " << listing.paths << " of " << listing.pathBytes / listing.paths
        << " bytes; heap at its peak " << peak / 1e6 << " MB\n";
}

namespace {

/// Microseconds of one progress line of one of `transfers` transfers, with everything that the icon
/// asks of the monitor then. The transfers take turns in an order that caches cannot foresee.
double eventMicroseconds(std::size_t transfers) {
  constexpr std::size_t events = 20'000;
  constexpr std::size_t step = 7919; // a prime, so that every transfer has its turn
  const Subject subject;
  const auto line = [](std::size_t number, std::size_t percent) {
    return " o /com~apple~CloudDocs/Uploads " + std::to_string(number % 100) + "/File " +
           std::to_string(number) + ".mov ↑ " + std::to_string(percent) + "%\r\n";
  };
  std::string all;
  for (std::size_t number = 0; number < transfers; ++number)
    all += line(number, number % 100);
  subject.feed(all);
  if (subject.monitor->active().size() != transfers)
    throw std::runtime_error("not every transfer is active");

  std::vector<std::string> lines;
  for (std::size_t event = 0; event < events; ++event)
    lines.push_back(line(event * step % transfers, event % 100));
  const SyncMonitor& monitor = *subject.monitor;
  const auto run = [&] {
    for (const std::string& text : lines) {
      subject.feed(text);
      if (monitor.overall() != OverallState::uploading || !monitor.progress() ||
          monitor.longestStall())
        throw std::runtime_error("the transfers do not show");
    }
  };
  std::vector<double> times;
  for (std::size_t round = 0; round < rounds; ++round)
    times.push_back(seconds(run));
  return median(times) * 1e6 / events;
}

} // namespace

void benchEvents(Figures& figures, std::ostream& notes) {
  const double few = eventMicroseconds(10);
  const double many = eventMicroseconds(100'000);
  figures["event_at_100000_over_at_10"] = many / few;
  notes << "microseconds an event: 10 transfers " << few << ", 1,000 " << eventMicroseconds(1000)
        << ", 10,000 " << eventMicroseconds(10'000) << ", 100,000 " << many << '\n';
}

} // namespace driftmark::bench
