// How the autostart entry is written, and when it counts as enabled.

#include "platform/linux/desktop/LinuxAdapters.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace driftmark {

namespace {

PlatformError errorOf(const QFileDevice& file) {
  return {file.errorString().toStdString()};
}

/// One argument of an Exec line: quoted, with the characters that are special inside quotes
/// escaped, and each backslash escaped once more, as in every string of an entry. A plain "%" would
/// start a field code.
QByteArray quoted(const std::string& word) {
  QByteArray text = "\"";
  for (const char c : word) {
    if (c == '"' || c == '`' || c == '$')
      text += R"(\\)";
    if (c == '\\')
      text += R"(\\\)";
    if (c == '%')
      text += '%';
    if (c == '\n')
      text += R"(\n)";
    else
      text += c;
  }
  return text + '"';
}

/// Whether the group that the desktops read has the line `key=value`.
bool hasLine(const QByteArray& entry, const QByteArray& key, const QByteArray& value) {
  bool inGroup = false;
  for (const QByteArray& each : entry.split('\n')) {
    const QByteArray line = each.trimmed();
    if (line.startsWith('['))
      inGroup = line == "[Desktop Entry]";
    const qsizetype equals = line.indexOf('=');
    if (inGroup && equals > 0 && line.left(equals).trimmed() == key &&
        line.mid(equals + 1).trimmed() == value)
      return true;
  }
  return false;
}

} // namespace

QString LinuxLoginItem::entryPath() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
         QStringLiteral("/autostart/com.tallowmere.driftmark.desktop");
}

LoginItem::Status LinuxLoginItem::status() const {
  QFile file(entryPath());
  if (!file.open(QIODevice::ReadOnly))
    return Status::notRegistered;
  const QByteArray entry = file.readAll();
  const bool isOff =
      hasLine(entry, "Hidden", "true") || hasLine(entry, "X-GNOME-Autostart-enabled", "false");
  return isOff ? Status::notRegistered : Status::enabled;
}

std::optional<PlatformError> LinuxLoginItem::registerItem() {
  const QString path = entryPath();
  QDir().mkpath(QFileInfo(path).path());
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly))
    return errorOf(file);
  file.write("[Desktop Entry]\n"
             "Type=Application\n"
             "Name=Driftmark\n"
             "Comment=Menu bar monitor for iCloud Drive sync activity\n"
             "Exec=" +
             quoted(executable_) +
             "\n"
             "Terminal=false\n");
  if (!file.commit())
    return errorOf(file);
  return std::nullopt;
}

std::optional<PlatformError> LinuxLoginItem::unregisterItem() {
  QFile file(entryPath());
  if (!file.remove() && QFileInfo::exists(file.fileName()))
    return errorOf(file);
  return std::nullopt;
}

} // namespace driftmark
