#include "StraightforwardMonitor.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <regex>

namespace driftmark::bench {
namespace {

constexpr std::size_t maxRecent = 10;

bool isUtf8(const std::string& text) {
  std::size_t at = 0;
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  while (at < text.size()) {
    const unsigned first = byte(at);
    std::size_t more = 0;
    unsigned low = 0x80;
    unsigned high = 0xbf;
    if (first >= 0xc2 && first <= 0xdf) {
      more = 1;
    } else if (first >= 0xe0 && first <= 0xef) {
      more = 2;
      low = first == 0xe0 ? 0xa0 : low;
      high = first == 0xed ? 0x9f : high;
    } else if (first >= 0xf0 && first <= 0xf4) {
      more = 3;
      low = first == 0xf0 ? 0x90 : low;
      high = first == 0xf4 ? 0x8f : high;
    } else if (first >= 0x80) {
      return false;
    }
    for (std::size_t i = 1; i <= more; ++i) {
      if (byte(at + i) < low || byte(at + i) > high)
        return false;
      low = 0x80;
      high = 0xbf;
    }
    at += 1 + more;
  }
  return true;
}

bool contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

std::string trimmed(const std::string& text, const char* characters) {
  const std::size_t first = text.find_first_not_of(characters);
  if (first == std::string::npos)
    return "";
  return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

std::string lastComponent(const std::string& path) {
  const std::size_t last = path.find_last_not_of('/');
  if (last == std::string::npos)
    return "/";
  const std::size_t slash = path.rfind('/', last);
  return path.substr(slash + 1, last - slash);
}

} // namespace

bool StraightforwardMonitor::ingest(std::string_view chunk) {
  buffer_ += chunk;
  bool changed = false;
  std::size_t start = 0;
  for (std::size_t end = buffer_.find('\n'); end != std::string::npos;
       end = buffer_.find('\n', start)) {
    const std::string line = buffer_.substr(start, end - start);
    if (isUtf8(line) && parse(line))
      changed = true;
    start = end + 1;
  }
  buffer_.erase(0, start);
  return changed;
}

bool StraightforwardMonitor::parse(const std::string& line) {
  static const std::regex ansi("\x1b\\[[0-9;]*m");
  const std::string text = trimmed(std::regex_replace(line, ansi, ""), "\r");
  if (!text.starts_with(" o /"))
    return false;
  const std::string rest = text.substr(3);

  std::size_t split = rest.find(" ↑ ");
  if (split == std::string::npos)
    split = rest.find(" ☁");
  const std::string path = rest.substr(0, split);
  const std::string remainder = split == std::string::npos ? "" : rest.substr(split);

  const std::string name = lastComponent(path);
  if (name.starts_with('.') || contains(path, "/.Trash"))
    return false;
  const std::string fullPath = mobileDocs_ + path;
  if (contains(remainder, "↑"))
    return progressed(fullPath, name, remainder, Direction::upload);
  if (contains(remainder, "↓"))
    return progressed(fullPath, name, remainder, Direction::download);

  const std::string state = trimmed(remainder, " \t");
  const bool evicted = contains(state, "not downloaded");
  if (!state.empty() && state != "☁" && !evicted)
    return unrecognized(fullPath, name, state);
  return settled(fullPath, name, evicted);
}

bool StraightforwardMonitor::progressed(const std::string& path, const std::string& name,
                                        const std::string& remainder, Direction direction) {
  static const std::regex percentPattern("([0-9]+(?:\\.[0-9]+)?)%");
  issues_.erase(path);
  std::optional<double> percent;
  if (std::smatch match; std::regex_search(remainder, match, percentPattern))
    percent = std::stod(match[1].str());
  if (!active_.contains(path)) {
    const std::string verb = direction == Direction::upload ? "uploading" : "downloading";
    log_.log("Driftmark: " + verb + ' ' + name);
  }
  active_[path] = ActiveItem{path, direction, percent, clock_.now()};
  return true;
}

bool StraightforwardMonitor::unrecognized(const std::string& path, const std::string& name,
                                          const std::string& state) {
  const std::string_view cloud = "☁";
  const std::string shown =
      state.starts_with(cloud) ? trimmed(state.substr(cloud.size()), " \t") : state;
  if (loggedUnknownStates_.insert(shown).second)
    log_.log("Driftmark: unrecognized state \"" + shown + "\" for " + name);
  std::string lower = shown;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  if (!contains(lower, "error") && !contains(lower, "conflict"))
    return false;
  const auto [issue, added] = issues_.try_emplace(path, shown);
  if (!added && issue->second == shown)
    return false;
  issue->second = shown;
  log_.log("Driftmark: sync issue on " + name + ": " + shown);
  return true;
}

bool StraightforwardMonitor::settled(const std::string& path, const std::string& name,
                                     bool evicted) {
  const bool cleared = issues_.erase(path) > 0;
  const auto found = active_.find(path);
  if (found == active_.end()) {
    const auto known = knownState_.find(path);
    const bool wasCurrent = known != knownState_.end() && known->second == KnownState::current;
    knownState_[path] = evicted ? KnownState::evicted : KnownState::current;
    if (!evicted || !wasCurrent)
      return cleared;
    addRecent(path, RecentKind::evicted);
    log_.log("Driftmark: evicted " + name);
    return true;
  }

  const Direction direction = found->second.direction;
  active_.erase(found);
  knownState_[path] = evicted ? KnownState::evicted : KnownState::current;
  if (evicted) {
    log_.log("Driftmark: download cancelled " + name);
    return true;
  }
  const bool upload = direction == Direction::upload;
  addRecent(path, upload ? RecentKind::upload : RecentKind::download);
  log_.log("Driftmark: synced " + name + (upload ? " (upload)" : " (download)"));
  return true;
}

void StraightforwardMonitor::addRecent(const std::string& path, RecentKind kind) {
  std::erase_if(recent_, [&](const CompletedItem& item) { return item.path == path; });
  recent_.insert(recent_.begin(), CompletedItem{path, kind, clock_.now()});
  if (recent_.size() > maxRecent)
    recent_.resize(maxRecent);
}

} // namespace driftmark::bench
