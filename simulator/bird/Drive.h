#pragma once

#include "bird/DiskFile.h"
#include "bird/Item.h"
#include "scenario/Action.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace icloud {

/// The drive: its folder on disk, and what iCloud knows of every item in it. Items keep their
/// numbers; those that are deleted stay listed as gone.
class Drive {
public:
  using Changed = std::function<void(ItemId)>;

  /// Makes the folder when it is not there. `changed` hears of every item that is new or changed.
  Drive(std::filesystem::path folder, Changed changed);

  /// While it is recalling, what happens to the drive happened on disk before.
  void setRecalling(bool recalling) { recalling_ = recalling; }

  const std::filesystem::path& folder() const { return folder_; }
  std::size_t count() const { return items_.size(); }
  const Item& item(ItemId id) const { return items_[id]; }
  std::string_view stateText(ItemId id) const;

  /// The item at `path`, unless there is none or it is gone.
  std::optional<ItemId> find(std::string_view path) const;

  /// Makes a folder and those above it; folders that are there are left alone.
  void addFolder(const std::string& path);

  /// Makes a file and the folders above it.
  ItemId addFile(const std::string& path, std::uint64_t bytes, bool contentsHere);

  void beginTransfer(ItemId id, Direction direction);

  /// `progress` from 0 to 100; `percent` as the item reports it.
  void moveTransfer(ItemId id, double progress, std::optional<double> percent);
  void finishTransfer(ItemId id);

  /// Gives up the contents here of a file that is in sync; false when they are not here anyway.
  /// Throws Refusal or std::system_error, and changes nothing then.
  bool evict(ItemId id);

  /// Whether a download has something to bring. Throws Refusal, or std::system_error when it could
  /// not be written here.
  bool lacksContents(ItemId id) const;

  /// Gives up what a download has brought so far.
  void cancelDownload(ItemId id);

  /// The same for a download that cannot go on; the file may be gone.
  void failDownload(ItemId id);

  /// Finishes what a daemon had begun for a client when it was killed, after what was noted of its
  /// work was recalled. Returns what had to be evicted.
  std::vector<ItemId> finishInterruptedWork();

  /// Takes away everybody's right to write to the file.
  void lock(ItemId id) { diskFile(items_[id]).lock(); }

  void setText(ItemId id, std::string text);

  /// Back to what the contents on disk say.
  void settle(ItemId id);

  /// Deletes the file, telling nobody.
  void vanish(ItemId id);

private:
  DiskFile diskFile(const Item& item) const { return DiskFile(folder_ / item.path, recalling_); }
  ItemId add(Item item);
  void fetch(Item& item, std::uint64_t present);
  void forget(ItemId id);
  void enter(ItemId id, ItemState state);

  std::filesystem::path folder_;
  Changed changed_;
  bool recalling_ = false;
  std::vector<Item> items_;
  std::unordered_map<std::string, ItemId> byPath_;
  std::unordered_map<ItemId, std::string> texts_;
};

} // namespace icloud
