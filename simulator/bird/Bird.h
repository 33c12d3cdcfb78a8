#pragma once

#include "bird/BirdOptions.h"
#include "bird/Client.h"
#include "bird/Cloud.h"
#include "bird/Feeder.h"
#include "bird/Journal.h"
#include "bird/Player.h"
#include "common/Descriptor.h"
#include "common/SystemRoot.h"
#include "scenario/Scenario.h"

#include <list>
#include <set>
#include <string>
#include <string_view>

namespace icloud {

/// The daemon: serves its clients and plays the scenario until a signal ends it.
class Bird : private Host {
public:
  Bird(const BirdOptions& options, SystemRoot root, const Scenario& scenario);
  ~Bird() override;

  /// Returns after SIGTERM or SIGINT.
  void run();

private:
  struct Connection {
    Client client;
    ItemFeeder* items = nullptr;
    GlobalFeeder* global = nullptr;

    bool feeds(Feed feed) const {
      return feed == Feed::items ? items != nullptr : global != nullptr;
    }
  };

  bool isWatched() const override;
  void killMonitors(std::optional<Feed> only) override;
  void killDaemon() override { isKilled_ = true; }
  void print(Feed feed, const std::string& bytes) override;
  void sendChanges() override;
  void report(const char* word, const std::string& text) override;

  void writeJournal();
  bool waitForWork();
  int pollTimeout() const;
  void acceptClients();
  void handle(Connection& connection, short events);
  void answer(Connection& connection, const Record& request);
  void carryOut(std::string_view operation, const std::string& path);
  void beginWhenReady(const std::string& served);
  void itemChanged(ItemId id);
  void globalChanged(std::size_t number, GlobalTransfers::Progress progress);

  SystemRoot root_;
  std::set<std::string> beginAfter_;
  Journal journal_;
  bool resumed_;
  bool isKilled_ = false;
  Cloud cloud_;
  Player player_;
  Descriptor signals_;
  Descriptor listener_;
  std::list<Connection> connections_;
};

} // namespace icloud
