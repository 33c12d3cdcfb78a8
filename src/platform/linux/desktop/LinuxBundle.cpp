#include "platform/linux/desktop/LinuxBundle.h"

#include "platform/linux/desktop/PropertyList.h"
#include "platform/posix/files/SystemRootPath.h"

#include <filesystem>
#include <system_error>

#include <QFile>

namespace driftmark {

namespace {

using std::filesystem::path;

/// The bundle around an executable; empty when it lies in none.
path bundleAround(const path& executable) {
  const path folder = executable.parent_path();
  const path contents = folder.parent_path();
  const path bundle = contents.parent_path();
  const bool isBundle = folder.filename() == "MacOS" && contents.filename() == "Contents" &&
                        bundle.extension() == ".app";
  std::error_code error;
  return isBundle && std::filesystem::is_regular_file(contents / "Info.plist", error) ? bundle
                                                                                      : path();
}

QByteArray contentsOf(const path& file) {
  QFile reader(QFile::decodeName(file.c_str()));
  return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}

/// The path without links, where there is such a thing.
std::string resolved(const std::string& name) {
  std::error_code error;
  const path real = std::filesystem::canonical(name, error);
  return error ? name : real.string();
}

} // namespace

LinuxBundle LinuxBundle::ofThisProcess(const std::string& systemRoot) {
  return {executableOfThisProcess(), systemRoot};
}

std::string LinuxBundle::executableOfThisProcess() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

LinuxBundle::LinuxBundle(const std::string& executable, const std::string& systemRoot) {
  std::filesystem::path folder = bundleAround(executable);
  if (folder.empty())
    folder = std::filesystem::path(executable).parent_path();
  else
    information_ = propertyListTexts(contentsOf(folder / "Contents" / "Info.plist"));
  // The system names executables by paths without links.
  path_ = withoutSystemRoot(resolved(systemRoot), folder.string());
}

std::optional<std::string> LinuxBundle::identifier() const {
  return information("CFBundleIdentifier");
}

std::optional<std::string> LinuxBundle::information(const std::string& key) const {
  const auto found = information_.find(key);
  return found == information_.end() ? std::nullopt : std::optional(found->second);
}

} // namespace driftmark
