// Which bundle an executable belongs to, and which texts its property list holds.

#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/posix/files/SystemRootPath.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include <QFile>
#include <QXmlStreamReader>

#include <fcntl.h>

namespace driftmark {

namespace {

using std::filesystem::path;
using Texts = std::map<std::string, std::string>;

/// The bundle that holds an executable; empty outside a bundle.
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

path propertyListIn(const path& bundle) {
  return bundle / "Contents" / "Info.plist";
}

QByteArray contentsOf(const path& file) {
  QFile reader(QFile::decodeName(file.c_str()));
  return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}

/// The path with links resolved; unchanged when it cannot be resolved.
std::string resolved(const std::string& name) {
  std::error_code error;
  const path real = std::filesystem::canonical(name, error);
  return error ? name : real.string();
}

/// Reads the elements of a dictionary.
Texts readDictionary(QXmlStreamReader& reader) {
  Texts texts;
  std::string key;
  while (reader.readNextStartElement()) {
    const auto element = reader.name();
    if (element == u"key") {
      key = reader.readElementText().toStdString();
      continue;
    }
    if (element != u"string")
      reader.skipCurrentElement();
    else if (std::string text = reader.readElementText().toStdString(); !key.empty())
      texts.insert_or_assign(key, std::move(text));
    key.clear();
  }
  return texts;
}

} // namespace

std::map<std::string, std::string> propertyListTexts(const QByteArray& xml) {
  QXmlStreamReader reader(xml);
  Texts texts;
  if (reader.readNextStartElement() && reader.name() == u"plist" && reader.readNextStartElement() &&
      reader.name() == u"dict")
    texts = readDictionary(reader);
  while (!reader.atEnd())
    reader.readNext();
  return reader.hasError() ? Texts() : texts;
}

LinuxBundle LinuxBundle::ofThisProcess(const std::string& systemRoot) {
  const std::string executable = executableOfThisProcess();
  LinuxBundle bundle(executable, systemRoot);
  if (const std::filesystem::path folder = bundleAround(executable); !folder.empty())
    bundle.propertyList_ =
        FileDescriptor(open(propertyListIn(folder).c_str(), O_RDONLY | O_CLOEXEC));
  return bundle;
}

std::string LinuxBundle::executableOfThisProcess() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::string LinuxBundle::helperOfThisProcess(const std::string& name) {
  return std::filesystem::path(executableOfThisProcess()).parent_path().parent_path() / "Helpers" /
         name;
}

LinuxBundle::LinuxBundle(const std::string& executable, const std::string& systemRoot) {
  std::filesystem::path folder = bundleAround(executable);
  if (folder.empty())
    folder = std::filesystem::path(executable).parent_path();
  else
    information_ = propertyListTexts(contentsOf(propertyListIn(folder)));
  // The system reports the paths of executables with links resolved.
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
