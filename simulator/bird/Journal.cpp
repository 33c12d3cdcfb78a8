#include "bird/Journal.h"

#include "common/Record.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr const char* storyKind = "story";
constexpr const char* restartKind = "restart";
constexpr const char* awaitedKind = "awaited";
constexpr const char* endKind = "end";

std::string textOf(const JournalEntry& entry) {
  const Progress& progress = entry.progress;
  const auto origin =
      progress.origin ? std::to_string(progress.origin->time_since_epoch().count()) : std::string();
  const auto waitingAt =
      progress.waitingAt ? std::to_string(progress.waitingAt->count()) : std::string();
  std::string text;
  appendRecord(text, {storyKind, origin, waitingAt, std::to_string(progress.next)});
  for (const Progress::Restart& restart : progress.restarts)
    appendRecord(text,
                 {restartKind, std::to_string(restart.at.count()), std::to_string(restart.next)});
  for (const std::string& name : entry.beginAfter)
    appendRecord(text, {awaitedKind, name});
  appendRecord(text, {endKind});
  return text;
}

void take(JournalEntry& entry, const Record& record) {
  Progress& progress = entry.progress;
  const std::string& kind = record.at(0);
  if (kind == storyKind) {
    if (!record.at(1).empty())
      progress.origin =
          Progress::Clock::time_point(Progress::Clock::duration(std::stoll(record[1])));
    if (!record.at(2).empty())
      progress.waitingAt = Milliseconds(std::stoll(record[2]));
    progress.next = std::stoull(record.at(3));
  } else if (kind == restartKind) {
    progress.restarts.push_back(
        {Milliseconds(std::stoll(record.at(1))), std::stoull(record.at(2))});
  } else if (kind == awaitedKind) {
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
    throw std::runtime_error("nothing to go on from: " + file_.string());
  RecordReader reader;
  reader.append(std::string{std::istreambuf_iterator<char>(stream), {}});
  JournalEntry entry;
  bool isWhole = false;
  try {
    while (const auto record = reader.next()) {
      take(entry, *record);
      isWhole = isWhole || record->front() == endKind;
    }
  } catch (const std::exception&) {
    isWhole = false;
  }
  if (!isWhole)
    throw std::runtime_error("not a journal: " + file_.string());
  return entry;
}

void Journal::write(const JournalEntry& entry) {
  std::string text = textOf(entry);
  if (text == written_)
    return;
  const fs::path unfinished = file_.string() + ".unfinished";
  std::ofstream stream(unfinished, std::ios::binary | std::ios::trunc);
  stream << text;
  stream.close();
  if (!stream)
    throw std::runtime_error("cannot write " + unfinished.string());
  fs::rename(unfinished, file_);
  written_ = std::move(text);
}

} // namespace icloud
