#include "brctl/ProgressLines.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

namespace icloud {
namespace {

std::uint64_t number(const std::string& text) {
  return std::strtoull(text.c_str(), nullptr, 10);
}

// Only what is complete shows as 1.
double shownFraction(std::uint64_t completed, std::uint64_t total) {
  if (completed >= total)
    return 1;
  return std::min(static_cast<double>(completed) / static_cast<double>(total), 0.9999);
}

template <typename... Values> std::string formatted(const char* format, Values... values) {
  std::array<char, 256> text{};
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

} // namespace

std::vector<std::string> progressLines(const Record& record, const Style& style) {
  const std::uint64_t completed = number(record.at(2));
  const std::uint64_t total = number(record.at(3));
  const std::uint64_t address = 0x600000c04000 + number(record.at(1)) * 0x80;
  const std::string fraction = formatted("%.4f", shownFraction(completed, total));
  return {formatted("<NSProgress: 0x%" PRIx64 "> : Parent: 0x0 (portion: 0) / Fraction completed: ",
                    address) +
              style.bold(fraction) +
              formatted(" / Completed: %" PRIu64 " of %" PRIu64 "  ", completed, total),
          formatted("  (kind: NSProgressKindFile, cancellable: NO, pausable: NO, finished: %s)",
                    completed >= total ? "YES" : "NO"),
          ""};
}

} // namespace icloud
