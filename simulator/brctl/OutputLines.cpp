// How `brctl` words what the daemon sends.
#include "brctl/OutputLines.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

namespace icloud {
namespace {

std::string upload(const std::string& percent, const Style& style) {
  if (percent.empty())
    return " ☁ " + style.blue("↑");
  std::string suffix = " ";
  suffix += style.blue("↑ " + percent + "%");
  return suffix;
}

std::string download(const std::string& percent, const Style& style) {
  return " ☁ " + style.green(percent.empty() ? "↓" : "↓ " + percent + "%");
}

std::string suffix(const std::string& kind, const std::string& detail, const Style& style) {
  if (kind == "upload")
    return upload(detail, style);
  if (kind == "download")
    return download(detail, style);
  if (kind == "current")
    return " ☁";
  if (kind == "evicted")
    return " ☁ " + style.dim("not downloaded");
  return kind == "state" ? " ☁ " + style.red(detail) : "";
}

std::uint64_t number(const std::string& text) {
  return std::strtoull(text.c_str(), nullptr, 10);
}

// Only a complete transfer shows as 1.
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

std::string jobState(const std::string& kind, const Style& style) {
  if (kind == "download")
    return style.green("downloader{") + "downloading:active throttle:none}";
  if (kind == "upload")
    return style.blue("upload{") + "state: active retries:0}";
  if (kind == "waiting-upload")
    return "upload{state: failed retries:3}";
  return "downloader{waiting}";
}

} // namespace

std::string itemLine(const Record& record, const Style& style) {
  const std::string& kind = record.at(2);
  const bool moves = kind == "upload" || kind == "download";
  return std::string(style.inColour() && moves ? "\r" : "") + style.bold(" o ") +
         "/com~apple~CloudDocs/" + record.at(1) + suffix(kind, record.at(3), style);
}

std::vector<std::string> progressLines(const Record& record, const Style& style) {
  const std::uint64_t completed = number(record.at(2));
  const std::uint64_t total = number(record.at(3));
  const std::uint64_t object = 0x600000c04000 + number(record.at(1)) * 0x80;
  const std::string fraction = formatted("%.4f", shownFraction(completed, total));
  return {formatted("<NSProgress: 0x%" PRIx64 "> : Parent: 0x0 (portion: 0) / Fraction completed: ",
                    object) +
              style.bold(fraction) +
              formatted(" / Completed: %" PRIu64 " of %" PRIu64 "  ", completed, total),
          formatted("  (kind: NSProgressKindFile, cancellable: NO, pausable: NO, finished: %s)",
                    completed >= total ? "YES" : "NO"),
          ""};
}

std::string statusLine(const Record& record, const Style& style) {
  const std::string& kind = record.at(0);
  if (kind == "items")
    return "<com.apple.CloudDocs[1] foreground {client:needs-sync|idle server:full-sync "
           "items:" +
           record.at(1) + "}>";
  if (kind == "folder")
    return "  " + style.bold("Under " + record.at(1));
  if (kind == "job")
    return "    > \"" + record.at(2) + "\" sharing-options:none " + jobState(record.at(1), style);
  return "";
}

} // namespace icloud
