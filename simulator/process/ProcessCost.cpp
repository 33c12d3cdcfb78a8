// How the kernel reports what a process uses and holds.

#include "process/ProcessCost.h"

#include "process/ChildProcess.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace icloud {
namespace {

namespace fs = std::filesystem;

fs::path folderOf(pid_t process) {
  return fs::path("/proc") / std::to_string(process);
}

/// The number behind `key` in a file of the kernel.
std::uint64_t numberIn(const fs::path& file, const std::string& key) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);)
    if (line.starts_with(key + ":"))
      return std::stoull(line.substr(key.size() + 1));
  throw std::runtime_error("no " + key + " in " + file.string());
}

std::size_t entriesOf(const fs::path& folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

} // namespace

ProcessCost costOf(pid_t process) {
  ProcessCost cost;
  for (const auto& thread : fs::directory_iterator(folderOf(process) / "task")) {
    std::uint64_t nanoseconds = 0;
    if (!(std::ifstream(thread.path() / "schedstat") >> nanoseconds))
      throw std::runtime_error("cannot read the time of " + thread.path().string());
    cost.nanoseconds += nanoseconds;
    cost.voluntarySwitches += numberIn(thread.path() / "status", "voluntary_ctxt_switches");
  }
  return cost;
}

ProcessHoldings holdingsOf(pid_t process) {
  const fs::path folder = folderOf(process);
  return {.memory = numberIn(folder / "status", "VmRSS"),
          .descriptors = entriesOf(folder / "fd"),
          .threads = numberIn(folder / "status", "Threads"),
          .children = childrenOf(process).size()};
}

double residentMemory(pid_t process) {
  return static_cast<double>(numberIn(folderOf(process) / "status", "VmRSS"));
}

std::chrono::duration<double> processorTime(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
    throw std::runtime_error("cannot read the time of " + folderOf(process).string());
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::uint64_t bytesRead(pid_t process) {
  return numberIn(folderOf(process) / "io", "rchar");
}

} // namespace icloud
