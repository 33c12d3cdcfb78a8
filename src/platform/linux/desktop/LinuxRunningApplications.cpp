// Which processes are copies of an application, in which order, and when a process started.

#include "platform/linux/SystemRoot.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <algorithm>
#include <charconv>
#include <compare>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include <QByteArray>
#include <QFile>
#include <QString>

namespace driftmark {

namespace fs = std::filesystem;

namespace {

/// The kernel assigns identifiers in ascending order, which orders processes of the same tick.
struct Process {
  RunningApplications::StartTime startTime;
  std::int32_t identifier;

  // NOLINTNEXTLINE(modernize-use-nullptr): the generated comparison has a plain 0 in it
  auto operator<=>(const Process&) const = default;
};

/// What the kernel appends to the path of a deleted file.
constexpr std::string_view deletedSuffix = " (deleted)";

template <class Number> std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                  : std::nullopt;
}

/// When the process with that folder in /proc started; absent when it has ended.
std::optional<RunningApplications::StartTime> startOf(const fs::path& folder) {
  constexpr int fieldsBetween = 19; // the name is the 2nd field, the start time the 22nd
  std::ifstream file(folder / "stat");
  std::string line;
  std::getline(file, line);
  // The name is in parentheses and may hold anything, parentheses too.
  std::istringstream fields(line.substr(std::min(line.rfind(')') + 1, line.size())));
  std::string field;
  for (int i = 0; i <= fieldsBetween; ++i)
    fields >> field;
  return fields ? numberIn<RunningApplications::StartTime>(field) : std::nullopt;
}

/// The system root that the process with that folder in /proc was started with.
std::string systemRootOf(const fs::path& folder) {
  const std::string prefix = std::string(SystemRoot::variableName) + "=";
  std::ifstream file(folder / "environ");
  for (std::string variable; std::getline(file, variable, '\0');)
    if (variable.starts_with(prefix))
      return variable.substr(prefix.size());
  return SystemRoot::none;
}

/// The property list of a deleted bundle, through the descriptor that the process with that folder
/// in /proc keeps open; empty if it keeps none.
QByteArray deletedPropertyList(const fs::path& folder, const fs::path& executable) {
  const std::string name =
      executable.parent_path().parent_path().string() + "/Info.plist" + std::string(deletedSuffix);
  std::error_code error;
  for (fs::directory_iterator entry(folder / "fd", error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code closed;
    QFile file(QString::fromStdString(entry->path().string()));
    if (fs::read_symlink(entry->path(), closed) == name && file.open(QIODevice::ReadOnly))
      return file.readAll();
  }
  return {};
}

/// The identifier of the bundle that the process with that folder in /proc was started from.
std::optional<std::string> bundleIdentifier(const fs::path& folder) {
  std::error_code hidden;
  const std::string executable = fs::read_symlink(folder / "exe", hidden).string();
  if (auto identifier = LinuxBundle(executable, "").identifier();
      identifier || !executable.ends_with(deletedSuffix))
    return identifier;
  const auto texts = propertyListTexts(deletedPropertyList(folder, executable));
  const auto found = texts.find("CFBundleIdentifier");
  return found == texts.end() ? std::nullopt : std::optional(found->second);
}

/// The process with that folder in /proc, if its bundle has that identifier and it was started with
/// that system root.
std::optional<Process> copyAt(const fs::path& folder, const std::string& identifier,
                              const std::string& systemRoot) {
  const auto process = numberIn<std::int32_t>(folder.filename().string());
  if (!process)
    return std::nullopt;
  if (bundleIdentifier(folder) != identifier || systemRootOf(folder) != systemRoot)
    return std::nullopt;
  const auto start = startOf(folder);
  return start ? std::optional(Process{*start, *process}) : std::nullopt;
}

} // namespace

std::vector<std::int32_t>
LinuxRunningApplications::withBundleIdentifier(const std::string& identifier) const {
  std::vector<Process> copies;
  std::error_code error;
  for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
       entry.increment(error))
    if (const auto copy = copyAt(entry->path(), identifier, systemRoot_))
      copies.push_back(*copy);
  std::ranges::sort(copies);
  std::vector<std::int32_t> identifiers;
  std::ranges::transform(copies, std::back_inserter(identifiers), &Process::identifier);
  return identifiers;
}

std::optional<RunningApplications::StartTime>
LinuxRunningApplications::startTime(std::int32_t process) const {
  return startOf(fs::path("/proc") / std::to_string(process));
}

} // namespace driftmark
