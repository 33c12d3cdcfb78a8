// How the states of items follow from what happens to them, and what is restored from disk.
#include "bird/Drive.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace icloud {
namespace {

constexpr std::array<std::pair<ItemState, const char*>, 6> notes{{
    {ItemState::current, DiskFile::currentState},
    {ItemState::evicted, DiskFile::evictedState},
    {ItemState::uploading, "uploading"},
    {ItemState::downloading, "downloading"},
    {ItemState::other, "other"},
    {ItemState::folder, DiskFile::currentState},
}};

const char* noteOf(ItemState state) {
  const auto* const found = std::find_if(notes.begin(), notes.end(),
                                         [state](const auto& note) { return note.first == state; });
  return found == notes.end() ? "other" : found->second;
}

// A file system without attributes shows only whether the contents are on disk.
ItemState stateOf(const std::string& note, bool contentsHere) {
  for (const auto& [state, text] : notes)
    if (note == text)
      return state;
  return contentsHere ? ItemState::current : ItemState::evicted;
}

FileContents contentsOf(const Item& item) {
  return {item.path, item.bytes};
}

} // namespace

Drive::Drive(std::filesystem::path folder, Changed changed)
    : folder_(std::move(folder)), changed_(std::move(changed)) {
  std::filesystem::create_directories(folder_);
}

std::string_view Drive::stateText(ItemId id) const {
  const auto found = texts_.find(id);
  return found == texts_.end() ? std::string_view() : std::string_view(found->second);
}

std::optional<ItemId> Drive::find(std::string_view path) const {
  const auto found = byPath_.find(std::string(path));
  if (found == byPath_.end())
    return std::nullopt;
  return found->second;
}

ItemId Drive::add(Item item) {
  const ItemId id = items_.size();
  byPath_.emplace(item.path, id);
  items_.push_back(std::move(item));
  changed_(id);
  return id;
}

void Drive::addParents(const std::string& path) {
  if (const auto slash = path.rfind('/'); slash != std::string::npos)
    addFolder(path.substr(0, slash));
}

void Drive::addFolder(const std::string& path) {
  if (const auto id = find(path)) {
    if (items_[*id].state != ItemState::folder)
      throw std::runtime_error("a file has the path of a folder: " + path);
    return;
  }
  addParents(path);
  std::filesystem::create_directory(folder_ / path);
  add(Item{path, 0, 0, std::nullopt, ItemState::folder, true});
}

ItemId Drive::addFile(const std::string& path, std::uint64_t bytes, bool contentsHere) {
  if (find(path))
    throw std::runtime_error("exists already: " + path);
  addParents(path);
  const ItemState state = contentsHere ? ItemState::current : ItemState::evicted;
  Item item{path, bytes, 0, std::nullopt, state, contentsHere};
  const DiskFile file = diskFile(item);
  if (contentsHere)
    file.createWithContents(contentsOf(item));
  else
    file.createEmptied(bytes);
  file.note(noteOf(state));
  return add(std::move(item));
}

void Drive::restoreFile(const std::string& path, std::uint64_t bytes) {
  const DiskFile file(folder_ / path);
  if (!file.exists())
    return;
  addParents(path);
  const std::uint64_t present = file.present(bytes);
  const bool isComplete = present == bytes;
  const ItemState state = stateOf(file.noted(), isComplete);
  Item item{path, bytes, 0, std::nullopt, state, state != ItemState::evicted};
  if (state == ItemState::downloading || state == ItemState::other)
    item.contentsHere = isComplete;
  if (state == ItemState::downloading)
    item.fetched = present;
  add(item);
  if (state != ItemState::evicted)
    return;
  try {
    file.finishEviction(contentsOf(item));
  } catch (const std::system_error&) {
    return; // a locked file keeps its blocks
  }
}

void Drive::restoreText(const std::string& path, const std::string& text) {
  if (const auto id = find(path); id && items_[*id].state == ItemState::other)
    texts_[*id] = text;
}

void Drive::enter(ItemId id, ItemState state) {
  Item& item = items_[id];
  if (item.state != state)
    diskFile(item).note(noteOf(state));
  item.state = state;
  item.percent.reset();
  if (state != ItemState::other)
    texts_.erase(id);
  changed_(id);
}

void Drive::beginTransfer(ItemId id, Direction direction) {
  Item& item = items_[id];
  if (direction == Direction::upload && !item.contentsHere)
    throw std::runtime_error("no contents to upload: " + item.path);
  const bool isUpload = direction == Direction::upload;
  const ItemState state = isUpload ? ItemState::uploading : ItemState::downloading;
  if (item.state != state)
    diskFile(item).note(noteOf(state));
  item.state = state;
  texts_.erase(id);
}

void Drive::fetch(Item& item, std::uint64_t present) {
  diskFile(item).fetch(contentsOf(item), item.fetched, present);
  item.fetched = present;
}

void Drive::moveTransfer(ItemId id, double progress, std::optional<double> percent) {
  Item& item = items_[id];
  if (item.state == ItemState::downloading && !item.contentsHere)
    fetch(item, static_cast<std::uint64_t>(static_cast<double>(item.bytes) * progress / 100));
  item.percent.reset();
  if (percent)
    item.percent = static_cast<float>(*percent);
  changed_(id);
}

void Drive::finishTransfer(ItemId id) {
  Item& item = items_[id];
  if (!item.contentsHere)
    fetch(item, item.bytes);
  item.fetched = 0;
  item.contentsHere = true;
  enter(id, ItemState::current);
}

bool Drive::evict(ItemId id) {
  Item& item = items_[id];
  if (item.state == ItemState::folder)
    throw Refusal(Refusal::isFolder);
  if (item.state == ItemState::downloading)
    throw Refusal(Refusal::stillDownloading);
  if (item.state == ItemState::evicted)
    diskFile(item).checkEmptied();
  if (!item.contentsHere)
    return false;
  if (item.state != ItemState::current)
    throw Refusal(Refusal::stillUploading);
  diskFile(item).evict(contentsOf(item));
  item.contentsHere = false;
  enter(id, ItemState::evicted);
  return true;
}

bool Drive::lacksContents(ItemId id) const {
  const Item& item = items_[id];
  if (item.state == ItemState::folder)
    throw Refusal(Refusal::isFolder);
  if (item.contentsHere || item.state == ItemState::downloading)
    return false;
  if (item.state == ItemState::evicted)
    diskFile(item).checkEmptied();
  return true;
}

void Drive::cancelDownload(ItemId id) {
  Item& item = items_[id];
  diskFile(item).dropContents(item.bytes);
  item.fetched = 0;
  item.contentsHere = false;
  enter(id, ItemState::evicted);
}

void Drive::failDownload(ItemId id) {
  try {
    cancelDownload(id);
  } catch (const std::system_error& problem) {
    if (problem.code() == std::errc::no_such_file_or_directory)
      return forget(id);
    items_[id].state = ItemState::evicted;
    items_[id].percent.reset();
    changed_(id);
  }
}

void Drive::setText(ItemId id, std::string text) {
  texts_[id] = std::move(text);
  enter(id, ItemState::other);
}

void Drive::settle(ItemId id) {
  if (items_[id].contentsHere)
    enter(id, ItemState::current);
  else
    cancelDownload(id);
}

void Drive::vanish(ItemId id) {
  diskFile(items_[id]).remove();
  forget(id);
}

void Drive::forget(ItemId id) {
  Item& item = items_[id];
  byPath_.erase(item.path);
  texts_.erase(id);
  item.state = ItemState::gone;
}

} // namespace icloud
