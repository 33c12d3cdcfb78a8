#include "core/ParserReference.h"

#include "support/Regex.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace driftmark::test {

namespace {

const std::string home = "/Users/ada/Library/Mobile Documents";
constexpr Seconds sweepInterval{30};

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

bool startsWith(const std::string& text, const std::string& front) {
  return text.compare(0, front.size(), front) == 0;
}

std::string trim(std::string text, const std::string& characters) {
  while (!text.empty() && has(characters, text.substr(0, 1)))
    text.erase(0, 1);
  while (!text.empty() && has(characters, text.substr(text.size() - 1)))
    text.pop_back();
  return text;
}

std::string lastComponent(std::string path) {
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
  return path == "/" ? path : path.substr(path.find_last_of('/') + 1);
}

std::string lowerCase(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c + 32);
  return text;
}

/// Decodes character by character and checks each one's range.
bool isText(const std::string& bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const auto first = static_cast<unsigned char>(bytes[at++]);
    if (first < 0x80)
      continue;
    const int more = first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : 1;
    if (first < 0xc0 || first >= 0xf8)
      return false;
    std::uint32_t character = first & (0x3fU >> more);
    for (int number = 0; number < more; ++number) {
      if (at == bytes.size() || (static_cast<unsigned char>(bytes[at]) & 0xc0U) != 0x80)
        return false;
      character = character << 6U | (static_cast<unsigned char>(bytes[at++]) & 0x3fU);
    }
    const std::uint32_t smallest = more == 3 ? 0x10000 : more == 2 ? 0x800 : 0x80;
    if (character < smallest || character > 0x10ffff ||
        (character >= 0xd800 && character <= 0xdfff))
      return false;
  }
  return true;
}

} // namespace

void ParserReference::ingest(const std::string& chunk) {
  buffer_ += chunk;
  bool changed = false;
  while (has(buffer_, "\n")) {
    const std::string line = buffer_.substr(0, buffer_.find('\n'));
    buffer_.erase(0, line.size() + 1);
    if (isText(line) && parse(line))
      changed = true;
  }
  if (changed)
    ++changes;
}

bool ParserReference::parse(std::string line) {
  static const std::regex colours("\x1b\\[[0-9;]*m");
  static const std::regex percentage("([0-9]+(?:\\.[0-9]+)?)%");

  line = trim(std::regex_replace(line, colours, ""), "\r");
  if (!startsWith(line, " o /"))
    return false;
  line.erase(0, 3);

  std::size_t cut = line.find(" \u2191 ");
  if (cut == std::string::npos)
    cut = line.find(" \u2601");
  const std::string printed = line.substr(0, cut);
  const std::string rest = cut == std::string::npos ? "" : line.substr(cut);
  const std::string name = lastComponent(printed);
  if (startsWith(name, ".") || has(printed, "/.Trash"))
    return false;
  const std::string path = home + printed;

  if (has(rest, "\u2191") || has(rest, "\u2193")) {
    const bool isUpload = has(rest, "\u2191");
    issues.erase(path);
    std::optional<double> percent;
    std::smatch match;
    if (std::regex_search(rest, match, percentage))
      percent = std::stod(match[1]);
    if (!active.contains(path)) {
      log.push_back((isUpload ? "Driftmark: uploading " : "Driftmark: downloading ") + name);
      if (!nextSweep_)
        nextSweep_ = later(now_, sweepInterval);
    }
    active[path] = {path, isUpload ? Direction::upload : Direction::download, percent, now_};
    return true;
  }

  std::string state = trim(rest, " \t");
  const bool evicted = has(state, "not downloaded");
  if (!state.empty() && state != "\u2601" && !evicted) {
    if (startsWith(state, "\u2601"))
      state = trim(state.substr(std::string("\u2601").size()), " \t");
    if (loggedStates_.insert(state).second)
      log.push_back("Driftmark: unrecognized state \"" + state + "\" for " + name);
    const bool isIssue = has(lowerCase(state), "error") || has(lowerCase(state), "conflict");
    if (!isIssue || (issues.contains(path) && issues[path] == state))
      return false;
    issues[path] = state;
    log.push_back("Driftmark: sync issue on " + name + ": " + state);
    return true;
  }

  const bool issueCleared = issues.erase(path) > 0;
  const bool wasActive = active.contains(path);
  const ActiveItem item = wasActive ? active[path] : ActiveItem();
  active.erase(path);
  const bool wasCurrent = known_.contains(path) && known_[path] == "current";
  known_[path] = evicted ? "evicted" : "current";
  if (!wasActive && !evicted)
    return issueCleared;
  if (!wasActive) {
    if (!wasCurrent)
      return issueCleared;
    remember(path, RecentKind::evicted);
    log.push_back("Driftmark: evicted " + name);
    return true;
  }
  if (evicted) {
    log.push_back("Driftmark: download cancelled " + name);
    return true;
  }
  const bool isDownload = item.direction == Direction::download;
  remember(path, isDownload ? RecentKind::download : RecentKind::upload);
  log.push_back("Driftmark: synced " + lastComponent(path) +
                (isDownload ? " (download)" : " (upload)"));
  redraws_.insert(later(now_, Seconds(3.1)));
  return true;
}

void ParserReference::remember(const std::string& path, RecentKind kind) {
  std::vector<CompletedItem> entries{{path, kind, now_}};
  for (const CompletedItem& entry : recent)
    if (entry.path != path && entries.size() < 10)
      entries.push_back(entry);
  recent = entries;
}

void ParserReference::sweep() {
  const std::map<std::string, ActiveItem> before = active;
  for (const auto& [path, item] : before) {
    if (files_.contains(path))
      continue;
    active.erase(path);
    log.push_back("Driftmark: dropped vanished transfer " + lastComponent(path));
  }
  nextSweep_ = active.empty() ? std::nullopt : std::optional(later(now_, sweepInterval));
  ++changes;
}

void ParserReference::advance(Seconds distance) {
  const Date target = later(now_, distance);
  while (nextSweep_ && *nextSweep_ <= target) {
    now_ = *nextSweep_;
    sweep();
  }
  now_ = target;
  while (!redraws_.empty() && *redraws_.begin() <= target) {
    redraws_.erase(redraws_.begin());
    ++changes;
  }
}

} // namespace driftmark::test
