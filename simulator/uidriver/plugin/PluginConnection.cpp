// Which requests the plug-in executes, and how it replies.

#include "uidriver/plugin/PluginConnection.h"

#include "common/LocalSocket.h"
#include "uidriver/plugin/Screenshot.h"
#include "uidriver/plugin/WindowDescription.h"

#include <map>
#include <system_error>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeySequence>

namespace icloud {
namespace {

Qt::MouseButton mouseButton(const QString& name) {
  static const std::map<QString, Qt::MouseButton> buttons{{"", Qt::LeftButton},
                                                          {"left", Qt::LeftButton},
                                                          {"right", Qt::RightButton},
                                                          {"middle", Qt::MiddleButton}};
  const auto found = buttons.find(name);
  return found == buttons.end() ? Qt::NoButton : found->second;
}

} // namespace

// Plug-ins are made while the application object is still being made, so the connection waits for
// the event loop.
PluginConnection::PluginConnection(std::filesystem::path socket)
    : path_(std::move(socket)), inspector_([this](const QJsonObject& notice) { send(notice); }) {
  connect(&socket_, &QLocalSocket::readyRead, this, &PluginConnection::readLines);
  QMetaObject::invokeMethod(
      this, [this] { open(); }, Qt::QueuedConnection);
}

void PluginConnection::open() {
  try {
    Descriptor connected = connectTo(path_.parent_path(), path_.filename().c_str());
    socket_.setSocketDescriptor(connected.release());
  } catch (const std::system_error& error) {
    qWarning("cannot connect to the UI driver at %s: %s", path_.c_str(), error.what());
    return;
  }
  send({{"notice", "hello"},
        {"process", static_cast<double>(QCoreApplication::applicationPid())},
        {"program", QCoreApplication::applicationFilePath()}});
}

// Each request runs from the event loop, not inside this signal: a request may open a window that
// runs an event loop of its own, and the socket does not emit the signal again inside a handler.
void PluginConnection::readLines() {
  while (socket_.canReadLine()) {
    const QByteArray line = socket_.readLine();
    QMetaObject::invokeMethod(
        this, [this, line] { handleRequest(line); }, Qt::QueuedConnection);
  }
}

void PluginConnection::handleRequest(const QByteArray& line) {
  static const std::map<QString, void (PluginConnection::*)(const QJsonObject&)> requests{
      {"windows", &PluginConnection::listWindows},
      {"press", &PluginConnection::pressButton},
      {"click", &PluginConnection::clickWidget},
      {"choose", &PluginConnection::chooseEntry},
      {"key", &PluginConnection::pressKey},
      {"type", &PluginConnection::typeText},
      {"screenshot", &PluginConnection::takeScreenshot}};
  const QJsonObject request = QJsonDocument::fromJson(line).object();
  const auto found = requests.find(request["do"].toString());
  if (found == requests.end())
    refuse(request, "unknown request: " + QString::fromUtf8(line).trimmed());
  else
    (this->*found->second)(request);
}

void PluginConnection::send(const QJsonObject& message) {
  if (socket_.state() != QLocalSocket::ConnectedState)
    return;
  socket_.write(QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n');
  socket_.flush();
}

void PluginConnection::reply(const QJsonObject& request, QJsonObject reply) {
  reply["reply"] = request["request"];
  send(reply);
}

void PluginConnection::refuse(const QJsonObject& request, const QString& reason) {
  reply(request, {{"error", reason}});
}

InputInjector::Callback PluginConnection::replyTo(const QJsonObject& request) {
  return [this, request] { reply(request, {}); };
}

void PluginConnection::listWindows(const QJsonObject& request) {
  QJsonArray windows;
  for (QWidget* const window : inspector_.windows())
    windows.append(describeWindow(*window));
  reply(request, {{"windows", windows}});
}

void PluginConnection::pressButton(const QJsonObject& request) {
  const QString title = request["title"].toString();
  QAbstractButton* const button = inspector_.button(title);
  if (button == nullptr)
    return refuse(request, "no button “" + title + "” can be reached");
  if (!button->isEnabled())
    return refuse(request, "the button “" + title + "” is disabled");
  injector_.click(*button, button->rect().center(), Qt::LeftButton, replyTo(request));
}

void PluginConnection::clickWidget(const QJsonObject& request) {
  const QString name = request["name"].toString();
  QWidget* const widget = inspector_.widget(name);
  const Qt::MouseButton button = mouseButton(request["button"].toString());
  if (widget == nullptr)
    return refuse(request, "no widget “" + name + "” is visible");
  if (button == Qt::NoButton)
    return refuse(request, "unknown mouse button " + request["button"].toString());
  injector_.click(*widget, widget->rect().center(), button, replyTo(request));
}

void PluginConnection::chooseEntry(const QJsonObject& request) {
  const QString text = request["text"].toString();
  const WindowInspector::Entry entry = inspector_.entry(text);
  if (entry.action == nullptr)
    return refuse(request, "no open menu has an entry “" + text + "”");
  if (!entry.action->isEnabled())
    return refuse(request, "the entry “" + text + "” is disabled");
  if (!entry.menu->rect().contains(entry.menu->actionGeometry(entry.action).center()))
    return refuse(request, "the entry “" + text + "” is outside the visible part of its menu");
  injector_.choose(*entry.menu, *entry.action, replyTo(request));
}

void PluginConnection::pressKey(const QJsonObject& request) {
  const QKeySequence keys(request["key"].toString(), QKeySequence::PortableText);
  QWidget* const window = inspector_.foremost();
  if (keys.count() != 1 || keys[0].key() == Qt::Key_unknown)
    return refuse(request, "unknown key " + request["key"].toString());
  if (window == nullptr)
    return refuse(request, "no window is visible");
  injector_.press(keys[0], *window, replyTo(request));
}

void PluginConnection::typeText(const QJsonObject& request) {
  QWidget* const window = inspector_.foremost();
  if (window == nullptr)
    return refuse(request, "no window is visible");
  injector_.type(request["text"].toString(), *window, replyTo(request));
}

void PluginConnection::takeScreenshot(const QJsonObject& request) {
  const QJsonValue number = request["window"];
  QWidget* const window = number.isDouble() ? inspector_.window(number.toInt()) : nullptr;
  if (number.isDouble() && window == nullptr)
    return refuse(request, "no visible window has that number");
  const QPixmap screenshot =
      window != nullptr ? windowScreenshot(*window) : screenScreenshot(inspector_.windows());
  const QString file = request["file"].toString();
  if (!screenshot.save(file, "PNG"))
    return refuse(request, "the screenshot cannot be written to " + file);
  reply(request, {{"width", screenshot.width()}, {"height", screenshot.height()}});
}

} // namespace icloud
