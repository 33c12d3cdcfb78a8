// How the kernel reports what a process uses.

#include "ProcessCost.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace driftmark::bench {
namespace {

namespace fs = std::filesystem;

fs::path folderOf(pid_t process) {
  return fs::path("/proc") / std::to_string(process);
}

/// The number behind `key` in a status file of the kernel.
std::uint64_t statusNumber(const fs::path& folder, const std::string& key) {
  std::ifstream file(folder / "status");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with(key + ":"))
      return std::stoull(line.substr(key.size() + 1));
  throw std::runtime_error("no " + key + " in " + (folder / "status").string());
}

} // namespace

ProcessCost costOf(pid_t process) {
  ProcessCost cost;
  for (const auto& thread : fs::directory_iterator(folderOf(process) / "task")) {
    std::uint64_t nanoseconds = 0;
    if (!(std::ifstream(thread.path() / "schedstat") >> nanoseconds))
      throw std::runtime_error("cannot read the time of " + thread.path().string());
    cost.nanoseconds += nanoseconds;
    cost.voluntarySwitches += statusNumber(thread.path(), "voluntary_ctxt_switches");
  }
  return cost;
}

double residentMemory(pid_t process) {
  return static_cast<double>(statusNumber(folderOf(process), "VmRSS"));
}

} // namespace driftmark::bench
