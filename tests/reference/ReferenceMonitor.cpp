// The rules of the per-item monitor once more, written for plainness.

#include "reference/ReferenceMonitor.h"

#include "support/Regex.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace driftmark {
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

bool ReferenceMonitor::ingest(std::string_view chunk) {
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

bool ReferenceMonitor::parse(const std::string& line) {
  static const std::regex ansi("\x1b\\[[0-9;]*m");
  const std::string text = trimmed(std::regex_replace(line, ansi, ""), "\r");
  if (!text.starts_with(" o /"))
    return false;
  const std::string item = text.substr(3);

  std::size_t split = item.find(" ↑ ");
  if (split == std::string::npos)
    split = item.find(" ☁");
  const std::string path = item.substr(0, split);
  const std::string remainder = split == std::string::npos ? "" : item.substr(split);

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

bool ReferenceMonitor::progressed(const std::string& path, const std::string& name,
                                  const std::string& remainder, Direction direction) {
  static const std::regex percentPattern("([0-9]+(?:\\.[0-9]+)?)%");
  issues_.erase(path);
  std::optional<double> percent;
  if (std::smatch match; std::regex_search(remainder, match, percentPattern))
    percent = std::strtod(match[1].str().c_str(), nullptr);
  if (percent && std::isinf(*percent)) // too large for a double
    percent.reset();
  if (!active_.contains(path)) {
    const std::string verb = direction == Direction::upload ? "uploading" : "downloading";
    log_.log("Driftmark: " + verb + ' ' + name);
    ++started_;
  }
  active_[path] = ActiveItem{path, direction, percent, clock_.now()};
  return true;
}

bool ReferenceMonitor::unrecognized(const std::string& path, const std::string& name,
                                    const std::string& state) {
  const std::string_view cloud = "☁";
  const std::string text =
      state.starts_with(cloud) ? trimmed(state.substr(cloud.size()), " \t") : state;
  if (loggedUnknownStates_.insert(text).second)
    log_.log("Driftmark: unrecognized state \"" + text + "\" for " + name);
  std::string lower = text;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  if (!contains(lower, "error") && !contains(lower, "conflict"))
    return false;
  const auto [issue, added] = issues_.try_emplace(path, text);
  if (!added && issue->second == text)
    return false;
  issue->second = text;
  log_.log("Driftmark: sync issue on " + name + ": " + text);
  return true;
}

bool ReferenceMonitor::settled(const std::string& path, const std::string& name, bool evicted) {
  const bool issueCleared = issues_.erase(path) > 0;
  const auto known = isEvicted_.find(path);
  const bool wasCurrent = known != isEvicted_.end() && !known->second;
  isEvicted_[path] = evicted;
  const auto found = active_.find(path);
  if (found == active_.end()) {
    if (!evicted || !wasCurrent)
      return issueCleared;
    addRecent(path, RecentKind::evicted);
    log_.log("Driftmark: evicted " + name);
    return true;
  }

  const Direction direction = found->second.direction;
  active_.erase(found);
  if (evicted) {
    log_.log("Driftmark: download cancelled " + name);
    return true;
  }
  const bool upload = direction == Direction::upload;
  addRecent(path, upload ? RecentKind::upload : RecentKind::download);
  lastFinished_ = recent_.front();
  log_.log("Driftmark: synced " + lastComponent(path) + (upload ? " (upload)" : " (download)"));
  ++finished_;
  return true;
}

void ReferenceMonitor::addRecent(const std::string& path, RecentKind kind) {
  std::erase_if(recent_, [&](const CompletedItem& item) { return item.path == path; });
  recent_.insert(recent_.begin(), CompletedItem{path, kind, clock_.now()});
  if (recent_.size() > maxRecent)
    recent_.resize(maxRecent);
}

void ReferenceMonitor::sweep(const std::function<bool(const std::string& path)>& fileExists) {
  std::erase_if(active_, [&](const auto& transfer) {
    const std::string& path = transfer.first;
    if (fileExists(path))
      return false;
    log_.log("Driftmark: dropped vanished transfer " + lastComponent(path));
    return true;
  });
}

} // namespace driftmark
