#include "bird/Drive.h"

#include <stdexcept>

namespace icloud {
namespace {

const char* noteOf(ItemState state) {
  switch (state) {
  case ItemState::folder:
  case ItemState::current:
    return "current";
  case ItemState::evicted:
    return "evicted";
  case ItemState::uploading:
    return "uploading";
  case ItemState::downloading:
    return "downloading";
  case ItemState::other:
  case ItemState::gone:
    break;
  }
  return "other";
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
  add(Item{path, 0, std::nullopt, ItemState::folder, true});
}

ItemId Drive::addFile(const std::string& path, std::uint64_t bytes, bool contentsHere) {
  if (find(path))
    throw std::runtime_error("there already: " + path);
  if (const auto slash = path.rfind('/'); slash != std::string::npos)
    addFolder(path.substr(0, slash));
  const ItemState state = contentsHere ? ItemState::current : ItemState::evicted;
  Item item{path, bytes, std::nullopt, state, contentsHere};
  const DiskFile file = diskFile(item);
  if (contentsHere)
    file.createWithContents(bytes);
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

void Drive::moveTransfer(ItemId id, double progress, std::optional<double> percent) {
  Item& item = items_[id];
  if (item.state == ItemState::downloading && !item.contentsHere)
    diskFile(item).fetch(
        static_cast<std::uint64_t>(static_cast<double>(item.bytes) * progress / 100));
  item.percent.reset();
  if (percent)
    item.percent = static_cast<float>(*percent);
  changed_(id);
}

void Drive::finishTransfer(ItemId id) {
  Item& item = items_[id];
  if (!item.contentsHere)
    diskFile(item).fetch(item.bytes);
  item.contentsHere = true;
  enter(id, ItemState::current);
}

void Drive::evict(ItemId id) {
  Item& item = items_[id];
  diskFile(item).dropContents(item.bytes);
  item.contentsHere = false;
  enter(id, ItemState::evicted);
}

void Drive::setText(ItemId id, std::string text) {
  texts_[id] = std::move(text);
  enter(id, ItemState::other);
}

void Drive::settle(ItemId id) {
  if (items_[id].contentsHere)
    enter(id, ItemState::current);
  else
    evict(id);
}

void Drive::vanish(ItemId id) {
  Item& item = items_[id];
  diskFile(item).remove();
  byPath_.erase(item.path);
  texts_.erase(id);
  item.state = ItemState::gone;
}

} // namespace icloud
