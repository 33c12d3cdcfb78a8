#include "uidriver/plugin/PluginConnection.h"

#include "common/LocalSocket.h"
#include "uidriver/plugin/Description.h"
#include "uidriver/plugin/Picture.h"

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

// The program is still being made when its plugins are.
PluginConnection::PluginConnection(std::filesystem::path socket)
    : path_(std::move(socket)), inspector_([this](const QJsonObject& notice) { send(notice); }) {
  connect(&socket_, &QLocalSocket::readyRead, this, &PluginConnection::takeLines);
  QMetaObject::invokeMethod(
      this, [this] { come(); }, Qt::QueuedConnection);
}

void PluginConnection::come() {
  try {
    Descriptor connected = connectTo(path_.parent_path(), path_.filename().c_str());
    socket_.setSocketDescriptor(connected.release());
  } catch (const std::system_error& error) {
    qWarning("nobody is at %s: %s", path_.c_str(), error.what());
    return;
  }
  send({{"notice", "hello"},
        {"process", static_cast<double>(QCoreApplication::applicationPid())},
        {"program", QCoreApplication::applicationFilePath()}});
}

// A socket tells of news only once at a time; what a request opens may wait for the next one.
void PluginConnection::takeLines() {
  while (socket_.canReadLine()) {
    const QByteArray line = socket_.readLine();
    QMetaObject::invokeMethod(
        this, [this, line] { obey(line); }, Qt::QueuedConnection);
  }
}

void PluginConnection::obey(const QByteArray& line) {
  static const std::map<QString, void (PluginConnection::*)(const QJsonObject&)> requests{
      {"windows", &PluginConnection::tellWindows}, {"press", &PluginConnection::pressButton},
      {"click", &PluginConnection::clickWidget},   {"choose", &PluginConnection::chooseEntry},
      {"key", &PluginConnection::pressKey},        {"type", &PluginConnection::typeText},
      {"picture", &PluginConnection::takePicture}};
  const QJsonObject request = QJsonDocument::fromJson(line).object();
  const auto found = requests.find(request["do"].toString());
  if (found == requests.end())
    refuse(request, "not a request: " + QString::fromUtf8(line).trimmed());
  else
    (this->*found->second)(request);
}

void PluginConnection::send(const QJsonObject& message) {
  if (socket_.state() != QLocalSocket::ConnectedState)
    return;
  socket_.write(QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n');
  socket_.flush();
}

void PluginConnection::answer(const QJsonObject& request, QJsonObject reply) {
  reply["reply"] = request["request"];
  send(reply);
}

void PluginConnection::refuse(const QJsonObject& request, const QString& why) {
  answer(request, {{"error", why}});
}

InputInjector::Callback PluginConnection::done(const QJsonObject& request) {
  return [this, request] { answer(request, {}); };
}

void PluginConnection::tellWindows(const QJsonObject& request) {
  QJsonArray windows;
  for (QWidget* const window : inspector_.windows())
    windows.append(WindowInspector::describe(*window));
  answer(request, {{"windows", windows}});
}

void PluginConnection::pressButton(const QJsonObject& request) {
  const QString title = request["title"].toString();
  QAbstractButton* const button = inspector_.button(title);
  if (button == nullptr)
    return refuse(request, "no button “" + title + "” is in reach");
  if (!button->isEnabled())
    return refuse(request, "the button “" + title + "” is disabled");
  injector_.click(*button, button->rect().center(), Qt::LeftButton, done(request));
}

void PluginConnection::clickWidget(const QJsonObject& request) {
  const QString name = request["name"].toString();
  QWidget* const widget = inspector_.widget(name);
  const Qt::MouseButton button = mouseButton(request["button"].toString());
  if (widget == nullptr)
    return refuse(request, "no widget “" + name + "” is on the screen");
  if (button == Qt::NoButton)
    return refuse(request, "a mouse has no button " + request["button"].toString());
  injector_.click(*widget, widget->rect().center(), button, done(request));
}

void PluginConnection::chooseEntry(const QJsonObject& request) {
  const QString text = request["text"].toString();
  const WindowInspector::Entry entry = inspector_.entry(text);
  if (entry.action == nullptr)
    return refuse(request, "no open menu has an entry “" + text + "”");
  if (!entry.action->isEnabled())
    return refuse(request, "the entry “" + text + "” is disabled");
  if (!entry.menu->rect().contains(entry.menu->actionGeometry(entry.action).center()))
    return refuse(request, "the entry “" + text + "” is scrolled out of sight");
  injector_.choose(*entry.menu, *entry.action, done(request));
}

void PluginConnection::pressKey(const QJsonObject& request) {
  const QKeySequence keys(request["key"].toString(), QKeySequence::PortableText);
  QWidget* const window = inspector_.foremost();
  if (keys.count() != 1 || keys[0].key() == Qt::Key_unknown)
    return refuse(request, "no key is called " + request["key"].toString());
  if (window == nullptr)
    return refuse(request, "no window is on the screen");
  injector_.press(keys[0], *window, done(request));
}

void PluginConnection::typeText(const QJsonObject& request) {
  QWidget* const window = inspector_.foremost();
  if (window == nullptr)
    return refuse(request, "no window is on the screen");
  injector_.type(request["text"].toString(), *window, done(request));
}

void PluginConnection::takePicture(const QJsonObject& request) {
  const QJsonValue number = request["window"];
  QWidget* const window = number.isDouble() ? inspector_.window(number.toInt()) : nullptr;
  if (number.isDouble() && window == nullptr)
    return refuse(request, "no such window is on the screen");
  const QPixmap picture =
      window != nullptr ? pictureOf(*window) : pictureOfScreen(inspector_.windows());
  const QString file = request["file"].toString();
  if (!picture.save(file, "PNG"))
    return refuse(request, "the picture cannot be written to " + file);
  answer(request, {{"width", picture.width()}, {"height", picture.height()}});
}

} // namespace icloud
