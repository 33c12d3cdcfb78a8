#pragma once

#include "ports/SystemLog.h"
#include "ports/UserDefaults.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace driftmark {

/// Settings in a file that users can read and edit: one JSON object, read at each access. A file
/// that cannot be read counts as empty; this is logged once for the same contents. When a setting
/// is written, a broken file is kept beside the new one as "settings.json.broken".
class LinuxUserDefaults final : public UserDefaults {
public:
  /// `driftmark/settings.json` in the user's configuration folder (`XDG_CONFIG_HOME`).
  static QString defaultPath();

  /// The log outlives this object.
  explicit LinuxUserDefaults(SystemLog& systemLog, QString path = defaultPath());

  std::optional<std::string> string(const std::string& key) const override;
  bool boolean(const std::string& key) const override;
  void setBoolean(const std::string& key, bool value) override;

private:
  struct Contents {
    QJsonObject settings;
    QString fault; ///< why the file cannot be read; empty when it can
    QByteArray bytes;
  };

  Contents read() const;
  QJsonObject settings() const;
  QString write(const QJsonObject& settings) const;
  QString keepBroken() const;
  void report(const Contents& contents) const;

  SystemLog& systemLog_;
  const QString path_;
  mutable Contents reported_; ///< the broken file that was logged last
};

} // namespace driftmark
