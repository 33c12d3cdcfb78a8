#include "bird/GlobalFeeder.h"

#include "common/Record.h"

namespace icloud {

void GlobalFeeder::fill(std::string& out, std::size_t enough) {
  while (!waiting_.empty() && out.size() < enough) {
    const auto& [number, progress] = *waiting_.begin();
    appendRecord(out, {"progress", std::to_string(number), std::to_string(progress.completed),
                       std::to_string(progress.total)});
    waiting_.erase(waiting_.begin());
  }
  while (!prints_.empty() && out.size() < enough) {
    appendRecord(out, {"text", prints_.front()});
    prints_.pop_front();
  }
}

} // namespace icloud
