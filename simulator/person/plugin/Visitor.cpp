#include "person/plugin/Visitor.h"

#include "common/LocalSocket.h"
#include "person/plugin/Description.h"
#include "person/plugin/Picture.h"

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
Visitor::Visitor(std::filesystem::path socket)
    : path_(std::move(socket)), eyes_([this](const QJsonObject& notice) { send(notice); }) {
  connect(&socket_, &QLocalSocket::readyRead, this, &Visitor::takeLines);
  QMetaObject::invokeMethod(
      this, [this] { come(); }, Qt::QueuedConnection);
}

void Visitor::come() {
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
void Visitor::takeLines() {
  while (socket_.canReadLine()) {
    const QByteArray line = socket_.readLine();
    QMetaObject::invokeMethod(
        this, [this, line] { obey(line); }, Qt::QueuedConnection);
  }
}

void Visitor::obey(const QByteArray& line) {
  static const std::map<QString, void (Visitor::*)(const QJsonObject&)> requests{
      {"windows", &Visitor::tellWindows}, {"press", &Visitor::pressButton},
      {"click", &Visitor::clickWidget},   {"choose", &Visitor::chooseEntry},
      {"key", &Visitor::pressKey},        {"type", &Visitor::typeText},
      {"picture", &Visitor::takePicture}};
  const QJsonObject request = QJsonDocument::fromJson(line).object();
  const auto found = requests.find(request["do"].toString());
  if (found == requests.end())
    refuse(request, "not a request: " + QString::fromUtf8(line).trimmed());
  else
    (this->*found->second)(request);
}

void Visitor::send(const QJsonObject& message) {
  if (socket_.state() != QLocalSocket::ConnectedState)
    return;
  socket_.write(QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n');
  socket_.flush();
}

void Visitor::answer(const QJsonObject& request, QJsonObject reply) {
  reply["reply"] = request["request"];
  send(reply);
}

void Visitor::refuse(const QJsonObject& request, const QString& why) {
  answer(request, {{"error", why}});
}

Hands::Callback Visitor::done(const QJsonObject& request) {
  return [this, request] { answer(request, {}); };
}

void Visitor::tellWindows(const QJsonObject& request) {
  QJsonArray windows;
  for (QWidget* const window : eyes_.windows())
    windows.append(Eyes::describe(*window));
  answer(request, {{"windows", windows}});
}

void Visitor::pressButton(const QJsonObject& request) {
  const QString title = request["title"].toString();
  QAbstractButton* const button = eyes_.button(title);
  if (button == nullptr)
    return refuse(request, "no button “" + title + "” is in reach");
  if (!button->isEnabled())
    return refuse(request, "the button “" + title + "” is disabled");
  hands_.click(*button, button->rect().center(), Qt::LeftButton, done(request));
}

void Visitor::clickWidget(const QJsonObject& request) {
  const QString name = request["name"].toString();
  QWidget* const widget = eyes_.widget(name);
  const Qt::MouseButton button = mouseButton(request["button"].toString());
  if (widget == nullptr)
    return refuse(request, "no widget “" + name + "” is on the screen");
  if (button == Qt::NoButton)
    return refuse(request, "a mouse has no button " + request["button"].toString());
  hands_.click(*widget, widget->rect().center(), button, done(request));
}

void Visitor::chooseEntry(const QJsonObject& request) {
  const QString text = request["text"].toString();
  const Eyes::Entry entry = eyes_.entry(text);
  if (entry.action == nullptr)
    return refuse(request, "no open menu has an entry “" + text + "”");
  if (!entry.action->isEnabled())
    return refuse(request, "the entry “" + text + "” is disabled");
  if (!entry.menu->rect().contains(entry.menu->actionGeometry(entry.action).center()))
    return refuse(request, "the entry “" + text + "” is scrolled out of sight");
  hands_.choose(*entry.menu, *entry.action, done(request));
}

void Visitor::pressKey(const QJsonObject& request) {
  const QKeySequence keys(request["key"].toString(), QKeySequence::PortableText);
  QWidget* const window = eyes_.foremost();
  if (keys.count() != 1 || keys[0].key() == Qt::Key_unknown)
    return refuse(request, "no key is called " + request["key"].toString());
  if (window == nullptr)
    return refuse(request, "no window is on the screen");
  hands_.press(keys[0], *window, done(request));
}

void Visitor::typeText(const QJsonObject& request) {
  QWidget* const window = eyes_.foremost();
  if (window == nullptr)
    return refuse(request, "no window is on the screen");
  hands_.type(request["text"].toString(), *window, done(request));
}

void Visitor::takePicture(const QJsonObject& request) {
  const QJsonValue number = request["window"];
  QWidget* const window = number.isDouble() ? eyes_.window(number.toInt()) : nullptr;
  if (number.isDouble() && window == nullptr)
    return refuse(request, "no such window is on the screen");
  const QPixmap picture = window != nullptr ? pictureOf(*window) : pictureOfScreen(eyes_.windows());
  const QString file = request["file"].toString();
  if (!picture.save(file, "PNG"))
    return refuse(request, "the picture cannot be written to " + file);
  answer(request, {{"width", picture.width()}, {"height", picture.height()}});
}

} // namespace icloud
