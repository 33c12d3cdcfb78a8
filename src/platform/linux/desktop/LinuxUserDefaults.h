#pragma once

#include "ports/SystemLog.h"
#include "ports/UserDefaults.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace driftmark {

/// Settings in a file that people can read and edit: one JSON object, read at each access. A file
/// that cannot be read as one is logged, once as long as it stays as it is, and counts as empty; it
/// is kept beside the new one, as "settings.json.broken", when a setting has to be written.
class LinuxUserDefaults final : public UserDefaults {
public:
  /// `driftmark/settings.json` in the user's folder for settings (`XDG_CONFIG_HOME`).
  static QString defaultPath();

  /// The log outlives this object.
  explicit LinuxUserDefaults(SystemLog& systemLog, QString path = defaultPath());

  std::optional<std::string> string(const std::string& key) const override;
  bool boolean(const std::string& key) const override;
  void setBoolean(const std::string& key, bool value) override;

private:
  struct Contents {
    QJsonObject settings;
    QString fault; ///< why the file cannot be read as settings; empty when it can
    QByteArray bytes;
  };

  Contents read() const;
  QJsonObject settings() const;
  QString write(const QJsonObject& settings) const;
  QString setAside() const;
  void report(const Contents& contents) const;

  SystemLog& systemLog_;
  const QString path_;
  mutable Contents reported_; ///< the broken file that was logged last
};

} // namespace driftmark
