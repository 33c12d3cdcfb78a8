// What each step of a scenario does to the cloud, and what of it a restarted daemon restores.
#include "bird/Player.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace icloud {

ItemId Player::itemOf(const std::string& path) const {
  const auto id = cloud_.drive.find(path);
  if (!id)
    throw std::runtime_error("there is no file \"" + path + "\" at this moment");
  return *id;
}

void Player::run(const MakeFolder& action) {
  cloud_.drive.addFolder(action.path);
}

void Player::run(const MakeFiles& action) {
  for (std::uint64_t index = 1; index <= action.paths.count(); ++index)
    cloud_.drive.addFile(action.paths.at(index), action.bytes, !action.remote);
}

void Player::run(const Transfer& action) {
  const ItemId id = action.newFile ? cloud_.drive.addFile(action.path, *action.newFile,
                                                          action.direction == Direction::upload)
                                   : itemOf(action.path);
  cloud_.drive.beginTransfer(id, action.direction);
  transfers_[id] = step_;
}

void Player::run(const SetState& action) {
  const ItemId id = itemOf(action.path);
  transfers_.erase(id);
  cloud_.drive.setText(id, action.text);
}

void Player::run(const ClearState& action) {
  const ItemId id = itemOf(action.path);
  if (cloud_.drive.item(id).state != ItemState::other)
    throw std::runtime_error("there is no state to clear on \"" + action.path + "\"");
  cloud_.drive.settle(id);
}

void Player::run(const Evict& action) {
  const ItemId id = itemOf(action.path);
  if (cloud_.drive.item(id).state != ItemState::current)
    throw std::runtime_error("not in sync, so it cannot be evicted: \"" + action.path + "\"");
  cloud_.drive.evict(id);
}

void Player::run(const CancelDownload& action) {
  const ItemId id = itemOf(action.path);
  if (cloud_.drive.item(id).state != ItemState::downloading)
    throw std::runtime_error("there is no download of \"" + action.path + "\"");
  transfers_.erase(id);
  cloud_.drive.cancelDownload(id);
}

void Player::run(const Vanish& action) {
  const ItemId id = itemOf(action.path);
  transfers_.erase(id);
  cloud_.drive.vanish(id);
}

void Player::run(const Lock& action) {
  cloud_.drive.lock(itemOf(action.path));
}

void Player::run(const AwaitMonitors& /*action*/) {
  if (!host_.isWatched())
    progress_.waitingAt = scenario_.steps[step_].at;
}

// The transfers that clients or a restart started continue.
void Player::dropComingSteps() {
  const auto coming = events_.begin() + static_cast<std::ptrdiff_t>(nextEvent_);
  events_.erase(std::remove_if(coming, events_.end(),
                               [this](const TimelineEvent& event) {
                                 return numberOf(event) < scenario_.steps.size();
                               }),
                events_.end());
}

void Player::run(const EndScenario& /*action*/) {
  dropComingSteps();
  host_.report("end", "");
}

void Player::run(const RepeatSteps& /*action*/) {
  dropComingSteps();
  const Milliseconds length = scenario_.length();
  std::vector<TimelineEvent> events = timelineOf(scenario_);
  for (; nextEvent_ < events_.size(); ++nextEvent_)
    events.push_back({events_[nextEvent_].at - length, events_[nextEvent_].what});
  sortByTime(events);
  events_ = std::move(events);
  nextEvent_ = 0;
  progress_.nextStep = 0;
  *progress_.origin += length;
}

// Everything else is in the states of the files on disk.
void Player::restore(const Action& action) {
  Drive& drive = cloud_.drive;
  if (const auto* folder = std::get_if<MakeFolder>(&action)) {
    drive.addFolder(folder->path);
  } else if (const auto* files = std::get_if<MakeFiles>(&action)) {
    for (std::uint64_t index = 1; index <= files->paths.count(); ++index)
      drive.restoreFile(files->paths.at(index), files->bytes);
  } else if (const auto* transfer = std::get_if<Transfer>(&action)) {
    if (transfer->newFile)
      drive.restoreFile(transfer->path, *transfer->newFile);
  } else if (const auto* state = std::get_if<SetState>(&action)) {
    drive.restoreText(state->path, state->text);
  } else if (const auto* jobs = std::get_if<AddJobs>(&action)) {
    run(*jobs);
  } else if (const auto* none = std::get_if<ClearJobs>(&action)) {
    run(*none);
  } else if (const auto* quota = std::get_if<SetQuota>(&action)) {
    run(*quota);
  }
}

} // namespace icloud
