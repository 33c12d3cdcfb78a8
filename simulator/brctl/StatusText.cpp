#include "brctl/StatusText.h"

namespace icloud {
namespace {

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
