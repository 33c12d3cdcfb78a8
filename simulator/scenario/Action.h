#pragma once

#include "scenario/NumberedPath.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace icloud {

using Milliseconds = std::chrono::milliseconds;

enum class Direction { upload, download };

/// One of the two streams that a monitor can show.
enum class Feed { items, global };

struct MakeFolder {
  std::string path;
};

/// One or many files, with their contents on disk or only in iCloud.
struct MakeFiles {
  NumberedPath paths;
  std::uint64_t bytes = 0;
  bool remote = false;
};

/// A transfer that the per-item monitor shows.
struct Transfer {
  enum class Outcome { finish, cancel, vanish };
  struct Stall {
    double percent = 0;
    Milliseconds duration{};
  };

  std::string path;
  Direction direction = Direction::upload;
  std::optional<std::uint64_t> newFile; ///< the size of a file that the transfer creates
  Milliseconds duration{};
  Milliseconds every{500};
  bool percentages = true;
  std::optional<Stall> stall;
  Outcome outcome = Outcome::finish;
  double endsAt = 100;
};

/// A transfer that only the global monitor shows.
struct GlobalTransfer {
  std::uint64_t bytes = 0;
  Milliseconds duration{};
  Milliseconds every{500};
};

/// Puts an item into a state that is neither in sync nor a transfer.
struct SetState {
  std::string path;
  std::string text;
};

/// Ends the state that `SetState` began.
struct ClearState {
  std::string path;
};

struct Evict {
  std::string path;
};

struct CancelDownload {
  std::string path;
};

/// Makes the file read-only for everybody.
struct Lock {
  std::string path;
};

/// Deletes the file without a notification.
struct Vanish {
  std::string path;
};

/// Active jobs of a folder that only the status report shows.
struct AddJobs {
  Direction direction = Direction::download;
  std::string folder;
  unsigned count = 0;
};

struct ClearJobs {};

struct SetQuota {
  std::int64_t bytes = 0;
};

/// Kills the `brctl monitor` processes, or those of one feed.
struct KillMonitors {
  std::optional<Feed> only;
};

/// Kills the daemon itself.
struct KillDaemon {};

/// Stops the scenario's clock until both feeds have a monitor.
struct AwaitMonitors {};

/// Sends bytes to the monitors of a feed, unchanged.
struct Print {
  Feed feed = Feed::items;
  std::string bytes;
};

struct EndScenario {};

/// Starts the steps again, with the scenario's clock back at zero.
struct RepeatSteps {};

using Action =
    std::variant<MakeFolder, MakeFiles, Transfer, GlobalTransfer, SetState, ClearState, Evict,
                 CancelDownload, Lock, Vanish, AddJobs, ClearJobs, SetQuota, KillMonitors,
                 KillDaemon, AwaitMonitors, Print, EndScenario, RepeatSteps>;

} // namespace icloud
