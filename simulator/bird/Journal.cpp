// How the daemon keeps its place in the scenario on disk.
#include "bird/Journal.h"

#include "common/Record.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr const char* progressKind = "progress";
constexpr const char* beginAfterKind = "begin-after";
constexpr const char* endKind = "end";

std::string textOf(const JournalEntry& entry) {
  const auto& [origin, waitingAt, nextStep] = entry.progress;
  std::string text;
  appendRecord(text, {progressKind,
                      origin ? std::to_string(origin->time_since_epoch().count()) : std::string(),
                      waitingAt ? std::to_string(waitingAt->count()) : std::string(),
                      std::to_string(nextStep)});
  for (const std::string& name : entry.beginAfter)
    appendRecord(text, {beginAfterKind, name});
  appendRecord(text, {endKind});
  return text;
}

void take(JournalEntry& entry, const Record& record) {
  Progress& progress = entry.progress;
  const std::string& kind = record.at(0);
  if (kind == progressKind) {
    if (!record.at(1).empty())
      progress.origin =
          Progress::Clock::time_point(Progress::Clock::duration(std::stoll(record[1])));
    if (!record.at(2).empty())
      progress.waitingAt = Milliseconds(std::stoll(record[2]));
    progress.nextStep = std::stoull(record.at(3));
  } else if (kind == beginAfterKind) {
    entry.beginAfter.insert(record.at(1));
  }
}

} // namespace

Journal::Journal(fs::path file) : file_(std::move(file)) {
  fs::create_directories(file_.parent_path());
}

JournalEntry Journal::read() const {
  std::ifstream stream(file_, std::ios::binary);
  if (!stream)
    throw std::runtime_error("nothing to resume from: " + file_.string());
  RecordReader reader;
  reader.append(std::string{std::istreambuf_iterator<char>(stream), {}});
  JournalEntry entry;
  bool isComplete = false;
  try {
    while (const auto record = reader.next()) {
      take(entry, *record);
      isComplete = isComplete || record->front() == endKind;
    }
  } catch (const std::exception&) {
    isComplete = false;
  }
  if (!isComplete)
    throw std::runtime_error("not a journal: " + file_.string());
  return entry;
}

void Journal::write(const JournalEntry& entry) {
  if (entry == written_)
    return;
  const fs::path unfinished = file_.string() + ".unfinished";
  std::ofstream stream(unfinished, std::ios::binary | std::ios::trunc);
  stream << textOf(entry);
  stream.close();
  if (!stream)
    throw std::runtime_error("cannot write " + unfinished.string());
  fs::rename(unfinished, file_);
  written_ = entry;
}

} // namespace icloud
