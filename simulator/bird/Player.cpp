#include "bird/Player.h"

#include "scenario/ScenarioError.h"

namespace icloud {
namespace {

std::string named(const Transfer& transfer) {
  return (transfer.direction == Direction::upload ? "the upload of \"" : "the download of \"") +
         transfer.path + "\"";
}

} // namespace

Player::Player(const Scenario& scenario, Cloud& cloud, Host& host)
    : scenario_(scenario), cloud_(cloud), host_(host), events_(timelineOf(scenario)) {}

void Player::setStage() {
  for (const Step& step : scenario_.stage) {
    try {
      std::visit([this](const auto& action) { run(action); }, step.action);
    } catch (const std::exception& problem) {
      throw ScenarioError(scenario_.file, step.line, problem.what());
    }
  }
}

void Player::begin(Clock::time_point now) {
  origin_ = now;
  host_.tell("begin", "items on the drive: " + std::to_string(cloud_.drive.count()));
}

Milliseconds Player::elapsed(Clock::time_point now) const {
  if (waitingAt_)
    return *waitingAt_;
  return origin_ ? std::chrono::duration_cast<Milliseconds>(now - *origin_) : Milliseconds{};
}

std::optional<Player::Clock::time_point> Player::nextDue() const {
  if (!origin_ || waitingAt_ || next_ == events_.size())
    return std::nullopt;
  return *origin_ + events_[next_].at;
}

void Player::advance(Clock::time_point now) {
  if (waitingAt_ && host_.isWatched()) {
    origin_ = now - *waitingAt_;
    waitingAt_.reset();
  }
  while (true) {
    const auto due = nextDue();
    if (!due || *due > now)
      return;
    perform(events_[next_++]);
  }
}

void Player::perform(const TimelineEvent& event) {
  try {
    std::visit([this](const auto& what) { happen(what); }, event.what);
  } catch (const std::exception& problem) {
    host_.tell("trouble",
               scenario_.file + ":" + std::to_string(lineOf(event)) + ": " + problem.what());
  }
  host_.sendChanges();
}

unsigned Player::lineOf(const TimelineEvent& event) const {
  return std::visit([this](const auto& what) { return scenario_.story[what.step].line; },
                    event.what);
}

const Transfer* Player::running(std::size_t step) const {
  const auto& transfer = std::get<Transfer>(scenario_.story[step].action);
  const auto id = cloud_.drive.find(transfer.path);
  if (!id)
    return nullptr;
  const auto found = transfers_.find(*id);
  return found != transfers_.end() && found->second == step ? &transfer : nullptr;
}

ItemId Player::itemOf(const std::string& path) const {
  const auto id = cloud_.drive.find(path);
  if (!id)
    throw std::runtime_error("there is no file \"" + path + "\" at this moment");
  return *id;
}

void Player::stop(ItemId id) {
  transfers_.erase(id);
}

void Player::happen(const RunStep& event) {
  step_ = event.step;
  const Step& step = scenario_.story[event.step];
  if (!std::holds_alternative<EndStory>(step.action))
    host_.tell("story", step.text);
  std::visit([this](const auto& action) { run(action); }, step.action);
}

void Player::happen(const TransferTick& event) {
  const Transfer* transfer = running(event.step);
  if (transfer == nullptr)
    return;
  cloud_.drive.moveTransfer(itemOf(transfer->path), event.percent,
                            transfer->percentages ? std::optional(event.percent) : std::nullopt);
}

void Player::happen(const TransferPause& event) {
  if (const Transfer* transfer = running(event.step))
    host_.tell("story", named(*transfer) + (event.begins ? " stalls" : " moves again"));
}

void Player::happen(const TransferEnd& event) {
  const Transfer* transfer = running(event.step);
  if (transfer == nullptr)
    return;
  const ItemId id = itemOf(transfer->path);
  stop(id);
  switch (transfer->ending) {
  case Transfer::Ending::finish:
    cloud_.drive.finishTransfer(id);
    host_.tell("story", named(*transfer) + " is finished");
    break;
  case Transfer::Ending::cancel:
    cloud_.drive.evict(id);
    host_.tell("story", named(*transfer) + " is cancelled");
    break;
  case Transfer::Ending::vanish:
    cloud_.drive.vanish(id);
    host_.tell("story", "\"" + transfer->path + "\" vanishes from the disk");
    break;
  }
}

void Player::happen(const GlobalTick& event) {
  const auto& transfer = std::get<GlobalTransfer>(scenario_.story[event.step].action);
  cloud_.globalTransfers.report(event.step, {event.completed, transfer.bytes});
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
  stop(id);
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
  stop(id);
  cloud_.drive.evict(id);
}

void Player::run(const Vanish& action) {
  const ItemId id = itemOf(action.path);
  stop(id);
  cloud_.drive.vanish(id);
}

void Player::run(const AwaitMonitors& /*action*/) {
  if (!host_.isWatched())
    waitingAt_ = scenario_.story[step_].at;
}

void Player::run(const EndStory& /*action*/) {
  next_ = events_.size();
  host_.tell("end", "");
}

} // namespace icloud
