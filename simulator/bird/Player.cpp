#include "bird/Player.h"

#include "scenario/ScenarioError.h"

#include <algorithm>
#include <set>

namespace icloud {
namespace {

std::string named(const Transfer& transfer) {
  return (transfer.direction == Direction::upload ? "the upload of \"" : "the download of \"") +
         transfer.path + "\"";
}

std::size_t stepOf(const TimelineEvent& event) {
  return std::visit([](const auto& what) { return what.step; }, event.what);
}

// A second, and one more for every ten megabytes.
Transfer downloadOf(const Item& item) {
  constexpr std::uint64_t bytesInAMillisecond = 10'000;
  Transfer transfer;
  transfer.path = item.path;
  transfer.direction = Direction::download;
  transfer.duration =
      Milliseconds(1000 + static_cast<Milliseconds::rep>(item.bytes / bytesInAMillisecond));
  transfer.every = std::max(Milliseconds(250), transfer.duration / 100);
  return transfer;
}

bool isEarlier(const TimelineEvent& left, const TimelineEvent& right) {
  return left.at < right.at;
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

void Player::tell(const char* word, const std::string& text) {
  if (!recalling_)
    host_.tell(word, text);
}

void Player::recallUntil(std::size_t next) {
  recalling_ = true;
  recallOperations();
  while (progress_.next < std::min(next, events_.size())) {
    perform(events_[progress_.next++]);
    recallOperations();
  }
  recalling_ = false;
}

void Player::recallOperations() {
  for (; !acts_.empty() && acts_.front().isDueAt(progress_); acts_.pop_front()) {
    try {
      carryOut(acts_.front());
    } catch (const std::exception&) {
      continue; // the disk will tell how the item stands
    }
  }
}

void Player::resume(const Progress& progress, std::deque<ClientOperation> acts,
                    Clock::time_point now) {
  acts_ = std::move(acts);
  for (const Progress::Restart& restart : progress.restarts) {
    recallUntil(restart.next);
    endStalls(restart.at);
    progress_.restarts.push_back(restart);
  }
  recallUntil(progress.next);
  progress_ = progress;
  if (!hasBegun())
    return;
  progress_.restarts.push_back({elapsed(now), progress_.next});
  endStalls(elapsed(now));
}

// What is left of a stalled transfer comes earlier by what is left of the standstill.
void Player::endStalls(Milliseconds at) {
  const auto coming = events_.begin() + static_cast<std::ptrdiff_t>(progress_.next);
  std::set<std::size_t> stalled;
  for (auto event = events_.begin(); event != coming; ++event)
    if (const auto* pause = std::get_if<TransferPause>(&event->what); pause && pause->begins)
      stalled.insert(pause->step);
  std::map<std::size_t, Milliseconds> left;
  for (auto event = coming; event != events_.end(); ++event)
    if (const auto* pause = std::get_if<TransferPause>(&event->what);
        pause && !pause->begins && stalled.contains(pause->step))
      left[pause->step] = event->at - at;
  for (auto event = coming; event != events_.end(); ++event)
    if (const auto found = left.find(stepOf(*event));
        found != left.end() && !std::holds_alternative<RunStep>(event->what))
      event->at -= found->second;
  std::stable_sort(coming, events_.end(), isEarlier);
}

void Player::begin(Clock::time_point now) {
  progress_.origin = now;
  tell("begin", "items on the drive: " + std::to_string(cloud_.drive.count()));
}

Milliseconds Player::elapsed(Clock::time_point now) const {
  if (progress_.waitingAt)
    return *progress_.waitingAt;
  return progress_.origin ? std::chrono::duration_cast<Milliseconds>(now - *progress_.origin)
                          : Milliseconds{};
}

std::optional<Player::Clock::time_point> Player::nextDue() const {
  if (!progress_.origin || progress_.waitingAt || progress_.next == events_.size())
    return std::nullopt;
  return *progress_.origin + events_[progress_.next].at;
}

void Player::advance(Clock::time_point now) {
  if (progress_.waitingAt && host_.isWatched()) {
    progress_.origin = now - *progress_.waitingAt;
    progress_.waitingAt.reset();
  }
  while (true) {
    const auto due = nextDue();
    if (!due || *due > now)
      return;
    perform(events_[progress_.next++]);
  }
}

ClientOperation Player::act(ClientOperation::Kind kind, ItemId id, Clock::time_point now) const {
  return {kind, cloud_.drive.item(id).path, progress_.restarts.size(), progress_.next,
          elapsed(now)};
}

std::optional<ClientOperation> Player::obey(ClientOperation::Kind kind, ItemId id,
                                            Clock::time_point now) {
  ClientOperation done = act(kind, id, now);
  if (!carryOut(done))
    return std::nullopt;
  host_.sendChanges();
  return done;
}

bool Player::carryOut(const ClientOperation& act) {
  const ItemId id = itemOf(act.path);
  if (act.kind == ClientOperation::Kind::eviction)
    return cloud_.drive.evict(id);
  if (!recalling_ && !cloud_.drive.lacksContents(id))
    return false;
  beginDownload(id, act.at);
  return true;
}

void Player::beginDownload(ItemId id, Milliseconds at) {
  cloud_.drive.beginTransfer(id, Direction::download);
  const std::size_t step = scenario_.story.size() + downloads_.size();
  downloads_.push_back(downloadOf(cloud_.drive.item(id)));
  transfers_[id] = step;
  addTransferEvents(events_, step, at, downloads_.back());
  std::stable_sort(events_.begin() + static_cast<std::ptrdiff_t>(progress_.next), events_.end(),
                   isEarlier);
  tell("story", "a client asks for " + named(downloads_.back()));
}

void Player::perform(const TimelineEvent& event) {
  try {
    std::visit([this](const auto& what) { happen(what); }, event.what);
  } catch (const std::exception& problem) {
    fail(event, problem.what());
  }
  host_.sendChanges();
}

// A step of the story that cannot be done is trouble; a client's download is given up.
void Player::fail(const TimelineEvent& event, const std::string& problem) {
  const std::size_t step = stepOf(event);
  if (step < scenario_.story.size()) {
    tell("trouble",
         scenario_.file + ":" + std::to_string(scenario_.story[step].line) + ": " + problem);
  } else if (const auto id = cloud_.drive.find(transferOf(step).path)) {
    stop(*id);
    cloud_.drive.failDownload(*id);
    tell("story", named(transferOf(step)) + " fails: " + problem);
  }
}

const Transfer& Player::transferOf(std::size_t step) const {
  const std::size_t steps = scenario_.story.size();
  return step < steps ? std::get<Transfer>(scenario_.story[step].action) : downloads_[step - steps];
}

const Transfer* Player::running(std::size_t step) const {
  const Transfer& transfer = transferOf(step);
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
    tell("story", step.text);
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
    tell("story", named(*transfer) + (event.begins ? " stalls" : " moves again"));
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
    tell("story", named(*transfer) + " is finished");
    break;
  case Transfer::Ending::cancel:
    cloud_.drive.cancelDownload(id);
    tell("story", named(*transfer) + " is cancelled");
    break;
  case Transfer::Ending::vanish:
    cloud_.drive.vanish(id);
    tell("story", "\"" + transfer->path + "\" vanishes from the disk");
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
  cloud_.drive.cancelDownload(id);
}

void Player::run(const Vanish& action) {
  const ItemId id = itemOf(action.path);
  stop(id);
  cloud_.drive.vanish(id);
}

void Player::run(const Lock& action) {
  cloud_.drive.lock(itemOf(action.path));
}

void Player::run(const KillDaemon& /*action*/) {
  if (!recalling_)
    host_.killDaemon();
}

void Player::run(const AwaitMonitors& /*action*/) {
  if (!recalling_ && !host_.isWatched())
    progress_.waitingAt = scenario_.story[step_].at;
}

// What is left of the clients' downloads goes on.
void Player::run(const EndStory& /*action*/) {
  const auto isOfStory = [this](const TimelineEvent& event) {
    return stepOf(event) < scenario_.story.size();
  };
  const auto coming = events_.begin() + static_cast<std::ptrdiff_t>(progress_.next);
  events_.erase(std::remove_if(coming, events_.end(), isOfStory), events_.end());
  tell("end", "");
}

} // namespace icloud
