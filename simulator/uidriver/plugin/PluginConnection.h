#pragma once

#include "uidriver/plugin/InputInjector.h"
#include "uidriver/plugin/WindowInspector.h"

#include <filesystem>

#include <QJsonObject>
#include <QLocalSocket>
#include <QObject>

namespace icloud {

/// The plug-in's end of the socket: executes the requests that arrive, one JSON object a line, and
/// replies to each. The README of this library lists them. Never blocks the program.
class PluginConnection : public QObject {
public:
  explicit PluginConnection(std::filesystem::path socket);

private:
  void open();
  void readLines();
  void handleRequest(const QByteArray& line);
  void send(const QJsonObject& message);
  void reply(const QJsonObject& request, QJsonObject reply);
  void refuse(const QJsonObject& request, const QString& reason);

  void listWindows(const QJsonObject& request);
  void pressButton(const QJsonObject& request);
  void clickWidget(const QJsonObject& request);
  void chooseEntry(const QJsonObject& request);
  void pressKey(const QJsonObject& request);
  void typeText(const QJsonObject& request);
  void takeScreenshot(const QJsonObject& request);

  /// Replies right before the last event of the gesture that `request` asks for.
  InputInjector::Callback replyTo(const QJsonObject& request);

  std::filesystem::path path_;
  QLocalSocket socket_;
  WindowInspector inspector_;
  InputInjector injector_;
};

} // namespace icloud
