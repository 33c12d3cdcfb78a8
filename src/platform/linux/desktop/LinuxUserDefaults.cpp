// How the settings file is read and written, and what happens to a broken one.

#include "platform/linux/desktop/LinuxAdapters.h"
#include "support/Log.h"

#include <utility>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QJsonValue>
#include <QSaveFile>
#include <QStandardPaths>

namespace driftmark {

QString LinuxUserDefaults::defaultPath() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
         "/driftmark/settings.json";
}

LinuxUserDefaults::LinuxUserDefaults(SystemLog& systemLog, QString path)
    : systemLog_(systemLog), path_(std::move(path)) {}

std::optional<std::string> LinuxUserDefaults::string(const std::string& key) const {
  const QJsonValue value = settings().value(QString::fromStdString(key));
  return value.isString() ? std::optional(value.toString().toStdString()) : std::nullopt;
}

bool LinuxUserDefaults::boolean(const std::string& key) const {
  return settings().value(QString::fromStdString(key)).toBool();
}

void LinuxUserDefaults::setBoolean(const std::string& key, bool value) {
  Contents contents = read();
  QString fault;
  if (!contents.fault.isEmpty()) {
    report(contents);
    fault = keepBroken();
  }
  contents.settings.insert(QString::fromStdString(key), value);
  if (fault.isEmpty())
    fault = write(contents.settings);
  if (!fault.isEmpty())
    log(systemLog_, {"the setting ", key, " cannot be kept in ", path_.toStdString(), ": ",
                     fault.toStdString()});
}

QJsonObject LinuxUserDefaults::settings() const {
  Contents contents = read();
  if (contents.fault.isEmpty())
    reported_ = {};
  else
    report(contents);
  return std::move(contents.settings);
}

LinuxUserDefaults::Contents LinuxUserDefaults::read() const {
  const QFileInfo information(path_);
  if (!information.exists())
    return {};
  // Reading a pipe or a device might never end.
  if (!information.isFile())
    return {{}, "it is not a file", {}};
  QFile file(path_);
  if (!file.open(QIODevice::ReadOnly))
    return {{}, file.errorString(), {}};

  const QByteArray bytes = file.readAll();
  QJsonParseError error{};
  const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
  if (error.error != QJsonParseError::NoError)
    return {{}, error.errorString() + QString(" at byte %1").arg(error.offset), bytes};
  if (!document.isObject())
    return {{}, "it is not an object", bytes};
  return {document.object(), {}, bytes};
}

void LinuxUserDefaults::report(const Contents& contents) const {
  if (contents.fault == reported_.fault && contents.bytes == reported_.bytes)
    return;
  reported_ = contents;
  log(systemLog_, {"the settings in ", path_.toStdString(),
                   " cannot be read: ", contents.fault.toStdString(), "; using none"});
}

/// Renames a broken file. Returns why that failed; empty when it did not.
QString LinuxUserDefaults::keepBroken() const {
  QString name = path_ + ".broken";
  for (int number = 2; QFileInfo::exists(name); ++number)
    name = path_ + QString(".broken-%1").arg(number);
  QFile file(path_);
  return file.rename(name) ? QString() : file.errorString();
}

/// Returns why the settings cannot be written; empty when they were.
QString LinuxUserDefaults::write(const QJsonObject& settings) const {
  if (!QDir().mkpath(QFileInfo(path_).path()))
    return "the folder cannot be made";
  QSaveFile file(path_);
  if (file.open(QIODevice::WriteOnly))
    file.write(QJsonDocument(settings).toJson(QJsonDocument::Indented));
  return file.commit() ? QString() : file.errorString();
}

} // namespace driftmark
