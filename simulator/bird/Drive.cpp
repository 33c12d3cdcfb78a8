#include "bird/Drive.h"

#include "bird/Refusal.h"

#include <stdexcept>
#include <system_error>

namespace icloud {
namespace {

const char* noteOf(ItemState state) {
  switch (state) {
  case ItemState::folder:
  case ItemState::current:
    return DiskFile::currentState;
  case ItemState::evicted:
    return DiskFile::evictedState;
  case ItemState::uploading:
    return "uploading";
  case ItemState::downloading:
    return DiskFile::downloadingState;
  case ItemState::other:
  case ItemState::gone:
    break;
  }
  return "other";
}

Contents contentsOf(const Item& item) {
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

void Drive::addFolder(const std::string& path) {
  if (const auto id = find(path)) {
    if (items_[*id].state != ItemState::folder)
      throw std::runtime_error("a file is where a folder should be: " + path);
    return;
  }
  if (const auto slash = path.rfind('/'); slash != std::string::npos)
    addFolder(path.substr(0, slash));
  if (!recalling_)
    std::filesystem::create_directory(folder_ / path);
  add(Item{path, 0, 0, std::nullopt, ItemState::folder, true});
}

ItemId Drive::addFile(const std::string& path, std::uint64_t bytes, bool contentsHere) {
  if (find(path))
    throw std::runtime_error("there already: " + path);
  if (const auto slash = path.rfind('/'); slash != std::string::npos)
    addFolder(path.substr(0, slash));
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
    throw std::runtime_error("nothing here to upload: " + item.path);
  const bool up = direction == Direction::upload;
  diskFile(item).note(noteOf(up ? ItemState::uploading : ItemState::downloading));
  item.state = up ? ItemState::uploading : ItemState::downloading;
  texts_.erase(id);
}

void Drive::fetch(Item& item, std::uint64_t present) {
  diskFile(item).fetch(contentsOf(item), item.fetched, present);
  if (!recalling_)
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

std::vector<ItemId> Drive::finishInterruptedWork() {
  std::vector<ItemId> evicted;
  for (ItemId id = 0; id < items_.size(); ++id) {
    const ItemState state = items_[id].state;
    if (state != ItemState::current && state != ItemState::evicted)
      continue;
    const std::string noted = diskFile(items_[id]).noted();
    if (state == ItemState::current && noted == DiskFile::evictedState)
      evicted.push_back(id);
    else if (state != ItemState::evicted || noted != DiskFile::downloadingState)
      continue;
    diskFile(items_[id]).note(DiskFile::evictedState);
    failDownload(id);
  }
  return evicted;
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
