// How the daemon answers its clients and keeps the scenario going.
#include "bird/Bird.h"

#include "common/LocalSocket.h"
#include "common/Requests.h"
#include "common/SignalDescriptor.h"
#include "common/SystemFailure.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <limits>
#include <vector>

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace icloud {
namespace {

constexpr const char* containerName = "com.apple.CloudDocs";
constexpr const char* driveFolder = "Library/Mobile Documents/com~apple~CloudDocs";

std::unique_ptr<Feeder> reply(std::initializer_list<std::string_view> fields) {
  std::string bytes;
  appendRecord(bytes, fields);
  return std::make_unique<ReplyFeeder>(std::move(bytes));
}

std::unique_ptr<Feeder> failure(const std::string& text) {
  return reply({"failure", text});
}

std::string wordsOf(const std::system_error& problem) {
  return problem.code() == std::errc::no_such_file_or_directory ? Refusal::noSuchFile
                                                                : problem.code().message();
}

/// The reply to an operation: done, or why it failed.
template <typename Operation> std::unique_ptr<Feeder> replyTo(const Operation& operation) {
  try {
    operation();
    return reply({"done"});
  } catch (const std::system_error& problem) {
    return failure(wordsOf(problem));
  } catch (const std::exception& problem) {
    return failure(problem.what());
  }
}

} // namespace

Bird::Bird(const BirdOptions& options, SystemRoot root, const Scenario& scenario)
    : root_(std::move(root)), beginAfter_(options.beginAfter), journal_(root_.birdJournal()),
      resumed_(options.resume), cloud_{Drive(options.home / driveFolder,
                                             [this](ItemId id) { itemChanged(id); }),
                                       GlobalTransfers([this](std::size_t number,
                                                              GlobalTransfers::Progress progress) {
                                         globalChanged(number, progress);
                                       }),
                                       StatusJobs(), 0},
      player_(scenario, cloud_, *this), signals_(signalDescriptor({SIGTERM, SIGINT})) {
  if (resumed_) {
    const JournalEntry entry = journal_.read();
    beginAfter_ = entry.beginAfter;
    player_.resume(entry.progress, Player::Clock::now());
  } else {
    player_.createInitialState();
  }
  std::filesystem::create_directories(root_.runFolder());
  listener_ = listenAt(root_.runFolder(), SystemRoot::birdSocket);
}

Bird::~Bird() {
  std::error_code ignored;
  std::filesystem::remove(root_.runFolder() / SystemRoot::birdSocket, ignored);
}

void Bird::writeJournal() {
  journal_.write({player_.progress(), beginAfter_});
}

void Bird::run() {
  writeJournal(); // a reader of the next line may kill this process at once
  report(resumed_ ? "resumed" : "ready", "");
  if (beginAfter_.empty() && !player_.hasBegun())
    player_.begin(Player::Clock::now());
  do {
    player_.advance(Player::Clock::now());
    writeJournal();
    if (isKilled_)
      kill(getpid(), SIGKILL);
    connections_.remove_if([](const Connection& each) { return each.client.isClosed(); });
  } while (waitForWork());
}

int Bird::pollTimeout() const {
  const auto due = player_.nextDue();
  if (!due)
    return -1;
  const auto left = std::chrono::ceil<Milliseconds>(*due - Player::Clock::now()).count();
  return static_cast<int>(std::clamp<long>(left, 0, std::numeric_limits<int>::max()));
}

bool Bird::waitForWork() {
  std::vector<pollfd> waits{{signals_.get(), POLLIN, 0}, {listener_.get(), POLLIN, 0}};
  for (const Connection& each : connections_)
    waits.push_back({each.client.descriptor(),
                     static_cast<short>(each.client.hasUnsent() ? POLLIN | POLLOUT : POLLIN), 0});
  if (poll(waits.data(), waits.size(), pollTimeout()) < 0) {
    if (errno == EINTR)
      return true;
    throwSystemFailure("cannot wait for clients");
  }
  auto wait = waits.begin() + 2;
  for (Connection& each : connections_)
    handle(each, (wait++)->revents);
  if (waits[1].revents != 0)
    acceptClients();
  return waits[0].revents == 0;
}

void Bird::acceptClients() {
  while (true) {
    Descriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket)
      return;
    connections_.push_back({Client(std::move(socket))});
  }
}

void Bird::handle(Connection& connection, short events) {
  if (events == 0 || connection.client.isClosed())
    return;
  try {
    if (const auto request = connection.client.receive())
      answer(connection, *request);
    connection.client.send();
  } catch (const std::exception&) {
    connection.client.close();
  }
}

void Bird::answer(Connection& connection, const Record& request) {
  const std::string kind = request.empty() ? "" : request.front();
  if (kind == itemsRequest && request.size() == 2 && request[1] == containerName) {
    auto feeder = std::make_unique<ItemFeeder>(cloud_.drive);
    connection.items = feeder.get();
    connection.client.serve(std::move(feeder));
  } else if (kind == itemsRequest) {
    connection.client.serve(failure("no such container"));
    return;
  } else if (kind == globalRequest) {
    auto feeder = std::make_unique<GlobalFeeder>(cloud_.globalTransfers);
    connection.global = feeder.get();
    connection.client.serve(std::move(feeder));
  } else if (kind == statusRequest) {
    connection.client.serve(std::make_unique<ReplyFeeder>(statusReport(cloud_)));
  } else if (kind == quotaRequest) {
    connection.client.serve(reply({"quota", std::to_string(cloud_.quota)}));
  } else if ((kind == evictRequest || kind == downloadRequest) && request.size() == 2) {
    connection.client.serve(replyTo([&] { carryOut(kind, request[1]); }));
    return;
  } else {
    connection.client.serve(failure("bird does not know this request"));
    return;
  }
  beginWhenReady(kind);
}

void Bird::carryOut(std::string_view operation, const std::string& path) {
  const auto id = lookUp(cloud_.drive, path);
  if (!id && operation == evictRequest)
    throw Refusal(Refusal::stillUploading);
  if (!id)
    return;
  if (operation == evictRequest)
    player_.evict(*id);
  else
    player_.download(*id, Player::Clock::now());
}

void Bird::beginWhenReady(const std::string& served) {
  beginAfter_.erase(served);
  if (beginAfter_.empty() && !player_.hasBegun())
    player_.begin(Player::Clock::now());
}

void Bird::itemChanged(ItemId id) {
  for (Connection& each : connections_)
    if (each.items != nullptr)
      each.items->changed(id);
}

void Bird::globalChanged(std::size_t number, GlobalTransfers::Progress progress) {
  for (Connection& each : connections_)
    if (each.global != nullptr)
      each.global->changed(number, progress);
}

bool Bird::isWatched() const {
  const auto watched = [&](Feed feed) {
    return std::any_of(connections_.begin(), connections_.end(), [&](const Connection& each) {
      return each.feeds(feed) && !each.client.isClosed();
    });
  };
  return watched(Feed::items) && watched(Feed::global);
}

void Bird::killMonitors(std::optional<Feed> only) {
  for (Connection& each : connections_) {
    const bool isMonitor = each.feeds(Feed::items) || each.feeds(Feed::global);
    if (!isMonitor || each.client.isClosed() || (only && !each.feeds(*only)))
      continue;
    kill(each.client.process(), SIGKILL);
    each.client.close();
  }
}

void Bird::print(Feed feed, const std::string& bytes) {
  for (Connection& each : connections_) {
    if (feed == Feed::items && each.items != nullptr)
      each.items->print(bytes);
    if (feed == Feed::global && each.global != nullptr)
      each.global->print(bytes);
  }
}

void Bird::sendChanges() {
  for (Connection& each : connections_)
    each.client.send();
}

void Bird::report(const char* word, const std::string& text) {
  const double seconds =
      std::chrono::duration<double>(player_.elapsed(Player::Clock::now())).count();
  std::printf("%.1f %s%s%s\n", seconds, word, text.empty() ? "" : " ", text.c_str());
  std::fflush(stdout);
}

} // namespace icloud
