// What a monitor receives, and in which order.
#include "bird/Feeder.h"

#include "common/Record.h"

#include <array>
#include <charconv>
#include <cmath>

namespace icloud {
namespace {

const char* kindOf(ItemState state) {
  switch (state) {
  case ItemState::folder:
    return "folder";
  case ItemState::current:
    return "current";
  case ItemState::evicted:
    return "evicted";
  case ItemState::uploading:
    return "upload";
  case ItemState::downloading:
    return "download";
  case ItemState::other:
  case ItemState::gone:
    break;
  }
  return "state";
}

std::string percentText(float percent) {
  std::array<char, 32> digits{};
  const double rounded = std::round(static_cast<double>(percent) * 10) / 10;
  char* end = std::to_chars(digits.data(), digits.data() + digits.size(), rounded).ptr;
  *end = 0;
  return digits.data();
}

void appendPrints(std::string& out, std::deque<std::string>& prints, std::size_t enough) {
  while (!prints.empty() && out.size() < enough) {
    appendRecord(out, {"text", prints.front()});
    prints.pop_front();
  }
}

} // namespace

ItemFeeder::ItemFeeder(const Drive& drive) : drive_(drive), listEnd_(drive.count()) {}

void ItemFeeder::changed(ItemId id) {
  const bool listedLater = listing_ && id >= listed_ && id < listEnd_;
  if (!listedLater && isWaiting_.insert(id).second)
    waiting_.push_back(id);
}

void ItemFeeder::appendItem(std::string& out, ItemId id) const {
  const Item& item = drive_.item(id);
  if (item.state == ItemState::gone)
    return;
  if (item.state == ItemState::other)
    appendRecord(out, {"item", item.path, "state", drive_.stateText(id)});
  else
    appendRecord(out, {"item", item.path, kindOf(item.state),
                       item.percent ? percentText(*item.percent) : std::string()});
}

void ItemFeeder::list(std::string& out, std::size_t enough) {
  while (listed_ < listEnd_ && out.size() < enough)
    appendItem(out, listed_++);
  if (listed_ < listEnd_)
    return;
  listing_ = false;
  appendRecord(out, {"listed", std::to_string(listEnd_)});
}

void ItemFeeder::fill(std::string& out, std::size_t enough) {
  if (listing_)
    list(out, enough);
  while (!waiting_.empty() && out.size() < enough) {
    appendItem(out, waiting_.front());
    isWaiting_.erase(waiting_.front());
    waiting_.pop_front();
  }
  appendPrints(out, prints_, enough);
}

void GlobalFeeder::fill(std::string& out, std::size_t enough) {
  while (!waiting_.empty() && out.size() < enough) {
    const auto& [number, progress] = *waiting_.begin();
    appendRecord(out, {"progress", std::to_string(number), std::to_string(progress.completed),
                       std::to_string(progress.total)});
    waiting_.erase(waiting_.begin());
  }
  appendPrints(out, prints_, enough);
}

} // namespace icloud
