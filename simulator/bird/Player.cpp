// When the events of a scenario are due, and what a restarted daemon continues.
#include "bird/Player.h"

#include <algorithm>

namespace icloud {
namespace {

std::string named(const Transfer& transfer) {
  return (transfer.direction == Direction::upload ? "the upload of \"" : "the download of \"") +
         transfer.path + "\"";
}

// One second, and one more for every ten megabytes.
Transfer downloadOf(const Item& item) {
  constexpr std::uint64_t bytesPerMillisecond = 10'000;
  Transfer transfer;
  transfer.path = item.path;
  transfer.direction = Direction::download;
  transfer.duration =
      Milliseconds(1000 + static_cast<Milliseconds::rep>(item.bytes / bytesPerMillisecond));
  transfer.every = std::max(Milliseconds(250), transfer.duration / 100);
  return transfer;
}

} // namespace

Player::Player(const Scenario& scenario, Cloud& cloud, Host& host)
    : scenario_(scenario), cloud_(cloud), host_(host), events_(timelineOf(scenario)) {}

void Player::createInitialState() {
  for (const Step& step : scenario_.initialState) {
    try {
      std::visit([this](const auto& action) { run(action); }, step.action);
    } catch (const std::exception& problem) {
      throw ScenarioError(scenario_.file, step.line, problem.what());
    }
  }
}

void Player::resume(const Progress& progress, Clock::time_point now) {
  progress_ = progress;
  for (const Step& step : scenario_.initialState)
    restore(step.action);
  const std::size_t done = std::min(progress.nextStep, scenario_.steps.size());
  for (std::size_t step = 0; step < done; ++step)
    restore(scenario_.steps[step].action);
  const Milliseconds at = elapsed(now);
  const bool hasEnded = done == scenario_.steps.size();
  std::erase_if(events_, [&](const TimelineEvent& event) {
    const bool isComing =
        !hasEnded && std::holds_alternative<GlobalTick>(event.what) && event.at > at;
    return numberOf(event) < done && !isComing;
  });
  for (ItemId id = 0; id < cloud_.drive.count(); ++id) {
    const Item& item = cloud_.drive.item(id);
    if (item.state != ItemState::uploading && item.state != ItemState::downloading)
      continue;
    const Transfer transfer = interruptedTransfer(item);
    const double share =
        item.bytes == 0 ? 0 : static_cast<double>(item.fetched) / static_cast<double>(item.bytes);
    startTransfer(id, transfer,
                  at - std::chrono::duration_cast<Milliseconds>(transfer.duration * share));
  }
}

// The last step that began such a transfer says how long it takes; otherwise a client began it.
Transfer Player::interruptedTransfer(const Item& item) const {
  const Direction direction =
      item.state == ItemState::uploading ? Direction::upload : Direction::download;
  Transfer found = downloadOf(item);
  for (std::size_t step = 0; step < std::min(progress_.nextStep, scenario_.steps.size()); ++step)
    if (const auto* transfer = std::get_if<Transfer>(&scenario_.steps[step].action);
        transfer != nullptr && transfer->path == item.path && transfer->direction == direction) {
      found.direction = direction;
      found.duration = transfer->duration;
      found.every = transfer->every;
      found.percentages = transfer->percentages;
    }
  return found;
}

void Player::begin(Clock::time_point now) {
  progress_.origin = now;
  host_.report("begin", "items on the drive: " + std::to_string(cloud_.drive.count()));
}

Milliseconds Player::elapsed(Clock::time_point now) const {
  if (progress_.waitingAt)
    return *progress_.waitingAt;
  return progress_.origin ? std::chrono::duration_cast<Milliseconds>(now - *progress_.origin)
                          : Milliseconds{};
}

std::optional<Player::Clock::time_point> Player::nextDue() const {
  if (!progress_.origin || progress_.waitingAt || nextEvent_ == events_.size())
    return std::nullopt;
  return *progress_.origin + events_[nextEvent_].at;
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
    perform(events_[nextEvent_++]);
  }
}

void Player::evict(ItemId id) {
  if (cloud_.drive.evict(id))
    host_.sendChanges();
}

void Player::download(ItemId id, Clock::time_point now) {
  if (!cloud_.drive.lacksContents(id))
    return;
  startTransfer(id, downloadOf(cloud_.drive.item(id)), elapsed(now));
  host_.report("event", "a client asks for " + named(extraTransfers_.back()));
  host_.sendChanges();
}

void Player::startTransfer(ItemId id, Transfer transfer, Milliseconds at) {
  cloud_.drive.beginTransfer(id, transfer.direction);
  const std::size_t number = scenario_.steps.size() + extraTransfers_.size();
  addTransferEvents(events_, number, at, transfer);
  sortByTime(events_, nextEvent_);
  extraTransfers_.push_back(std::move(transfer));
  transfers_[id] = number;
}

// A copy, since a step may replace the events.
void Player::perform(TimelineEvent event) {
  try {
    std::visit([this](const auto& what) { apply(what); }, event.what);
  } catch (const std::exception& problem) {
    fail(event, problem.what());
  }
  host_.sendChanges();
}

// A step that fails is trouble; a download that fails is given up.
void Player::fail(const TimelineEvent& event, const std::string& problem) {
  const std::size_t number = numberOf(event);
  if (number < scenario_.steps.size())
    return host_.report("trouble", scenario_.file + ":" +
                                       std::to_string(scenario_.steps[number].line) + ": " +
                                       problem);
  const Transfer& transfer = transferOf(number);
  const auto id = cloud_.drive.find(transfer.path);
  if (!id)
    return;
  transfers_.erase(*id);
  if (transfer.direction == Direction::download)
    cloud_.drive.failDownload(*id);
  host_.report("event", named(transfer) + " fails: " + problem);
}

const Transfer& Player::transferOf(std::size_t number) const {
  const std::size_t steps = scenario_.steps.size();
  return number < steps ? std::get<Transfer>(scenario_.steps[number].action)
                        : extraTransfers_[number - steps];
}

const Transfer* Player::running(std::size_t number) const {
  const Transfer& transfer = transferOf(number);
  const auto id = cloud_.drive.find(transfer.path);
  if (!id)
    return nullptr;
  const auto found = transfers_.find(*id);
  return found != transfers_.end() && found->second == number ? &transfer : nullptr;
}

void Player::apply(const RunStep& event) {
  step_ = event.step;
  progress_.nextStep = event.step + 1;
  const Step& step = scenario_.steps[event.step];
  if (!std::holds_alternative<EndScenario>(step.action))
    host_.report("event", step.text);
  std::visit([this](const auto& action) { run(action); }, step.action);
}

void Player::apply(const TransferTick& event) {
  if (const Transfer* transfer = running(event.step))
    cloud_.drive.moveTransfer(itemOf(transfer->path), event.percent,
                              transfer->percentages ? std::optional(event.percent) : std::nullopt);
}

void Player::apply(const TransferPause& event) {
  if (const Transfer* transfer = running(event.step))
    host_.report("event", named(*transfer) + (event.begins ? " stalls" : " moves again"));
}

void Player::apply(const TransferEnd& event) {
  const Transfer* transfer = running(event.step);
  if (transfer == nullptr)
    return;
  const ItemId id = itemOf(transfer->path);
  transfers_.erase(id);
  switch (transfer->outcome) {
  case Transfer::Outcome::finish:
    cloud_.drive.finishTransfer(id);
    return host_.report("event", named(*transfer) + " is finished");
  case Transfer::Outcome::cancel:
    cloud_.drive.cancelDownload(id);
    return host_.report("event", named(*transfer) + " is cancelled");
  case Transfer::Outcome::vanish:
    cloud_.drive.vanish(id);
    return host_.report("event", "\"" + transfer->path + "\" vanishes from the disk");
  }
}

void Player::apply(const GlobalTick& event) {
  const auto& transfer = std::get<GlobalTransfer>(scenario_.steps[event.step].action);
  cloud_.globalTransfers.update(event.step, {event.completed, transfer.bytes});
}

} // namespace icloud
