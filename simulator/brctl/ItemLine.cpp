#include "brctl/ItemLine.h"

namespace icloud {
namespace {

std::string upload(const std::string& percent, const Style& style) {
  if (percent.empty())
    return " ☁ " + style.blue("↑");
  std::string ending = " ";
  ending += style.blue("↑ " + percent + "%");
  return ending;
}

std::string download(const std::string& percent, const Style& style) {
  return " ☁ " + style.green(percent.empty() ? "↓" : "↓ " + percent + "%");
}

std::string ending(const std::string& kind, const std::string& detail, const Style& style) {
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

} // namespace

std::string itemLine(const Record& record, const Style& style) {
  const std::string& kind = record.at(2);
  const bool moves = kind == "upload" || kind == "download";
  return std::string(style.inColour() && moves ? "\r" : "") + style.bold(" o ") +
         "/com~apple~CloudDocs/" + record.at(1) + ending(kind, record.at(3), style);
}

} // namespace icloud
