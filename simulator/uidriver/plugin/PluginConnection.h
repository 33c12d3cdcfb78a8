#pragma once

#include "uidriver/plugin/InputInjector.h"
#include "uidriver/plugin/WindowInspector.h"

#include <filesystem>

#include <QJsonObject>
#include <QLocalSocket>
#include <QObject>

namespace icloud {

/// The user's side inside the program: carries out the requests that come through the socket, one
/// JSON object a line, and answers each with one. What can be asked is said in the README of the
/// simulator. The program is never waited for nor held up.
class PluginConnection : public QObject {
public:
  explicit PluginConnection(std::filesystem::path socket);

private:
  void come();
  void takeLines();
  void obey(const QByteArray& line);
  void send(const QJsonObject& message);
  void answer(const QJsonObject& request, QJsonObject reply);
  void refuse(const QJsonObject& request, const QString& why);

  void tellWindows(const QJsonObject& request);
  void pressButton(const QJsonObject& request);
  void clickWidget(const QJsonObject& request);
  void chooseEntry(const QJsonObject& request);
  void pressKey(const QJsonObject& request);
  void typeText(const QJsonObject& request);
  void takePicture(const QJsonObject& request);

  /// What to do right before the last event of the gesture that `request` asks for.
  InputInjector::Callback done(const QJsonObject& request);

  std::filesystem::path path_;
  QLocalSocket socket_;
  WindowInspector inspector_;
  InputInjector injector_;
};

} // namespace icloud
