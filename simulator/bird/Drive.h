#pragma once

#include "bird/DiskFile.h"
#include "scenario/Action.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace icloud {

/// The relation of an item to iCloud.
enum class ItemState : std::uint8_t {
  folder,
  current,     ///< the same here and there
  evicted,     ///< contents only there
  uploading,   ///< contents here, transfer under way
  downloading, ///< contents there, transfer under way
  other,       ///< a state of its own, which the drive keeps as a text
  gone,        ///< deleted
};

/// A file or a folder of the drive.
struct Item {
  std::string path; ///< relative to the drive
  std::uint64_t bytes = 0;
  std::uint64_t fetched = 0;    ///< bytes that a download under way has written
  std::optional<float> percent; ///< of a transfer that reports it
  ItemState state = ItemState::folder;
  bool contentsHere = true;
};

using ItemId = std::size_t;

/// The drive: its folder on disk, and what iCloud knows of every item in it. Items keep their
/// numbers; deleted ones stay in the list as gone. The states of files are also stored on disk, so
/// that a restarted daemon finds them again.
class Drive {
public:
  using Changed = std::function<void(ItemId)>;

  /// Creates the folder if necessary. `changed` is called for every item that is new or changed.
  Drive(std::filesystem::path folder, Changed changed);

  const std::filesystem::path& folder() const { return folder_; }
  std::size_t count() const { return items_.size(); }
  const Item& item(ItemId id) const { return items_[id]; }
  std::string_view stateText(ItemId id) const;

  /// The item at `path`, unless there is none or it is gone.
  std::optional<ItemId> find(std::string_view path) const;

  /// Creates a folder and those above it, as far as they do not exist.
  void addFolder(const std::string& path);

  /// Creates a file and the folders above it.
  ItemId addFile(const std::string& path, std::uint64_t bytes, bool contentsHere);

  /// Adds a file of an earlier daemon in the state that the disk shows, unless it was deleted.
  /// Finishes an eviction that was interrupted.
  void restoreFile(const std::string& path, std::uint64_t bytes);

  /// Restores the text of a file that is in a state of its own; ignores others.
  void restoreText(const std::string& path, const std::string& text);

  void beginTransfer(ItemId id, Direction direction);

  /// `progress` from 0 to 100; `percent` as the item reports it.
  void moveTransfer(ItemId id, double progress, std::optional<double> percent);
  void finishTransfer(ItemId id);

  /// Drops the contents of a file that is in sync; false when there are none on disk. Throws
  /// Refusal or std::system_error, and changes nothing then.
  bool evict(ItemId id);

  /// Whether a download has anything to do. Throws Refusal, or std::system_error when the file
  /// cannot be written.
  bool lacksContents(ItemId id) const;

  /// Drops what a download has written so far.
  void cancelDownload(ItemId id);

  /// The same for a download that failed; the file may be gone.
  void failDownload(ItemId id);

  /// Makes the file read-only for everybody.
  void lock(ItemId id) { diskFile(items_[id]).lock(); }

  void setText(ItemId id, std::string text);

  /// Ends a state of its own: the file is current or evicted, depending on its contents on disk.
  void settle(ItemId id);

  /// Deletes the file without a notification.
  void vanish(ItemId id);

private:
  DiskFile diskFile(const Item& item) const { return DiskFile(folder_ / item.path); }
  ItemId add(Item item);
  void addParents(const std::string& path);
  void fetch(Item& item, std::uint64_t present);
  void forget(ItemId id);
  void enter(ItemId id, ItemState state);

  std::filesystem::path folder_;
  Changed changed_;
  std::vector<Item> items_;
  std::unordered_map<std::string, ItemId> byPath_;
  std::unordered_map<ItemId, std::string> texts_;
};

// PathLookup.cpp

/// The item of the drive that a client means by an absolute path. Links above the last component
/// are followed. Nothing when the path leads into the drive but iCloud does not know the file.
/// Throws Refusal when there is no such file or it is elsewhere, std::system_error when that cannot
/// be determined.
std::optional<ItemId> lookUp(const Drive& drive, const std::string& path);

} // namespace icloud
