// How the counts and the model are printed.

#include "replay/Report.h"

#include "ports/FileSystem.h"
#include "ports/SystemText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace driftmark {
namespace {

constexpr int labelWidth = 22;
constexpr int countWidth = 10;

/// `text` with its control characters escaped, for a terminal.
std::string printable(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    // U+0080 to U+009F have two bytes.
    const bool isHighControl =
        byte == 0xc2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xa0;
    if (byte < 0x20 || byte == 0x7f) {
      result += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
    } else if (isHighControl) {
      const auto code = static_cast<unsigned char>(text[++i]);
      result += {'\\', 'u', '0', '0', digits[code >> 4], digits[code & 15]};
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string percent(std::optional<double> value) {
  if (!value)
    return "-";
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), *value);
  return std::string(text.data(), end.ptr) + " %";
}

std::string_view word(Direction direction) {
  return direction == Direction::upload ? "upload" : "download";
}

std::string_view word(RecentKind kind) {
  switch (kind) {
  case RecentKind::upload:
    return "upload";
  case RecentKind::download:
    return "download";
  case RecentKind::evicted:
    return "evicted";
  }
  return "";
}

/// The addresses of entries, in the order of what `key` gives.
template <class Range, class Key> auto sorted(const Range& range, Key key) {
  std::vector<const std::remove_reference_t<decltype(*range.begin())>*> entries;
  for (const auto& entry : range)
    entries.push_back(&entry);
  std::sort(entries.begin(), entries.end(),
            [&](const auto* a, const auto* b) { return key(*a) < key(*b); });
  return entries;
}

class Printer {
public:
  Printer(std::ostream& out, const SyncMonitor& monitor, const SyncMonitor::Ports& platform)
      : out_(out), monitor_(monitor), platform_(platform),
        mobileDocs_(platform.fileSystem.homeDirectory() + "/Library/Mobile Documents") {}

  void print() const {
    counts();
    states();
    active();
    recent();
    issues();
  }

private:
  void counts() const {
    const MonitorTally& tally = monitor_.tally();
    count("lines read", tally.lines);
    count("dropped, not UTF-8", tally.invalidLines);
    count("item lines", tally.itemLines);
    count("transfers started", tally.transfersStarted);
    count("transfers finished", tally.transfersFinished);
    count("evictions", tally.evictions);
    count("cancelled downloads", tally.downloadsCancelled);
    count("issues raised", tally.issuesRaised);
    count("unrecognised states", tally.unrecognizedStates);
  }

  void count(std::string_view label, std::uint64_t value) const {
    out_ << std::left << std::setw(labelWidth) << label << std::right << std::setw(countWidth)
         << value << '\n';
  }

  void states() const {
    out_ << '\n'
         << std::left << std::setw(labelWidth) << "overall state" << name(monitor_.overall())
         << '\n';
    if (const auto progress = monitor_.progress())
      out_ << std::setw(labelWidth) << "mean progress" << percent(std::round(*progress * 10) / 10)
           << '\n';
    if (const auto activity = monitor_.globalActivity())
      out_ << std::setw(labelWidth) << "global activity" << activity->count
           << (activity->count == 1 ? " transfer, " : " transfers, ")
           << platform_.text.byteCount(activity->bytes) << '\n';
  }

  void active() const {
    heading("active", monitor_.active().size());
    for (const ActiveItem* item :
         sorted(monitor_.active(), [](const ActiveItem& one) { return one.path; }))
      out_ << "  " << std::left << std::setw(10) << word(item->direction) << std::right
           << std::setw(8) << percent(item->percent) << "  " << asCaptured(item->path) << '\n';
  }

  void recent() const {
    heading("recent, newest first", monitor_.recent().size());
    for (const CompletedItem& item : monitor_.recent())
      out_ << "  " << std::left << std::setw(20) << word(item.kind) << asCaptured(item.path)
           << '\n';
  }

  void issues() const {
    heading("issues", monitor_.issues().size());
    for (const auto* entry : sorted(monitor_.issues(), [](const auto& one) { return one.first; }))
      out_ << "  " << asCaptured(entry->first) << ": " << printable(entry->second) << '\n';
  }

  void heading(std::string_view title, std::size_t size) const {
    out_ << '\n' << title << " (" << size << ")\n";
  }

  /// The path as the capture has it.
  std::string asCaptured(std::string_view path) const {
    if (path.starts_with(mobileDocs_))
      path.remove_prefix(mobileDocs_.size());
    return printable(path);
  }

  std::ostream& out_;
  const SyncMonitor& monitor_;
  const SyncMonitor::Ports& platform_;
  const std::string mobileDocs_;
};

} // namespace

void printReport(std::ostream& out, const SyncMonitor& monitor,
                 const SyncMonitor::Ports& platform) {
  Printer(out, monitor, platform).print();
}

} // namespace driftmark
