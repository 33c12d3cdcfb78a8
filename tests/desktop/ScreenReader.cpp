// How a test reads and uses a program as a screen reader does.

#include "desktop/ScreenReader.h"

#include "harness/Waiting.h"

#include <algorithm>
#include <stdexcept>

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QEventLoop>
#include <QTimer>

namespace driftmark::test {

namespace {

constexpr const char* registry = "org.a11y.atspi.Registry";
constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";
constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
constexpr const char* actionInterface = "org.a11y.atspi.Action";
constexpr const char* componentInterface = "org.a11y.atspi.Component";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* connectionName = "accessibility";

/// The numbers that the protocol gives to states.
enum State { checked = 4, enabled = 8, expanded = 10, focusable = 11, focused = 12, showing = 25 };

QVariantList call(const QDBusConnection& bus, const QString& service, const QString& path,
                  const char* interface, const char* method, const QVariantList& arguments = {}) {
  QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
  message.setArguments(arguments);
  const QDBusMessage reply = bus.call(message);
  if (reply.type() != QDBusMessage::ReplyMessage)
    throw std::runtime_error(std::string(method) + ": " + reply.errorMessage().toStdString());
  return reply.arguments();
}

QVariant property(const QDBusConnection& bus, const QString& service, const QString& path,
                  const char* interface, const char* name) {
  return call(bus, service, path, propertiesInterface, "Get", {interface, name})
      .front()
      .value<QDBusVariant>()
      .variant();
}

void announce(const QDBusConnection& session, bool isRunning) {
  for (const char* const name : {"IsEnabled", "ScreenReaderEnabled"})
    call(session, "org.a11y.Bus", "/org/a11y/bus", propertiesInterface, "Set",
         {"org.a11y.Status", name, QVariant::fromValue(QDBusVariant(isRunning))});
}

QDBusConnection connectTo(const QDBusConnection& session) {
  const QString address =
      call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
          .front()
          .toString();
  QDBusConnection bus = QDBusConnection::connectToBus(address, connectionName);
  if (!bus.isConnected())
    throw std::runtime_error("the accessibility bus does not answer");
  return bus;
}

struct Reference {
  QString service;
  QString path;
};

std::vector<Reference> childrenOf(const QDBusConnection& bus, const QString& service,
                                  const QString& path) {
  const QVariantList reply = call(bus, service, path, accessibleInterface, "GetChildren");
  const auto list = reply.front().value<QDBusArgument>();
  std::vector<Reference> children;
  list.beginArray();
  while (!list.atEnd()) {
    Reference child;
    QDBusObjectPath object;
    list.beginStructure();
    list >> child.service >> object;
    list.endStructure();
    child.path = object.path();
    children.push_back(child);
  }
  list.endArray();
  return children;
}

} // namespace

const Accessible* Accessible::first(const std::string& ofRole) const {
  if (role == ofRole)
    return this;
  for (const Accessible& child : children)
    if (const Accessible* const found = child.first(ofRole))
      return found;
  return nullptr;
}

const Accessible& Accessible::shown(const std::string& ofRole, const std::string& text) const {
  const std::function<const Accessible*(const Accessible&)> find =
      [&](const Accessible& item) -> const Accessible* {
    if (item.role == ofRole && item.name == text && item.isShowing)
      return &item;
    for (const Accessible& child : item.children)
      if (const Accessible* const found = find(child))
        return found;
    return nullptr;
  };
  if (const Accessible* const found = find(*this))
    return *found;
  throw std::runtime_error("no " + ofRole + " is called " + text);
}

const Accessible& Accessible::named(const std::string& text) const {
  const auto found = std::ranges::find(children, text, &Accessible::name);
  if (found == children.end())
    throw std::runtime_error("no child is called " + text);
  return *found;
}

ScreenReader::ScreenReader(const SessionBus& session) : bus_(connectTo(session.connection())) {
  announce(session.connection(), true);
  for (const char* const event :
       {"object:children-changed", "object:state-changed", "object:property-change", "window:"})
    call(bus_, registry, "/org/a11y/atspi/registry", registry, "RegisterEvent", {event});
}

ScreenReader::~ScreenReader() {
  QDBusConnection::disconnectFromBus(connectionName);
}

Accessible ScreenReader::awaitProgram(pid_t process,
                                      const std::function<bool(const Accessible&)>& test) {
  QEventLoop loop;
  for (const char* const interface : {"org.a11y.atspi.Event.Object", "org.a11y.atspi.Event.Window"})
    if (!bus_.connect({}, {}, interface, {}, &loop, SLOT(quit())))
      throw std::runtime_error("the accessibility bus sends no events");
  QTimer::singleShot(maxWait, &loop, [&loop] { loop.exit(1); });
  while (true) {
    std::optional<Accessible> found = program(process);
    if (found && test(*found))
      return *std::move(found);
    if (loop.exec() != 0)
      throw TimedOut(found ? "a change in what the program shows to screen readers"
                           : "the program to show itself to screen readers");
  }
}

void ScreenReader::awaitChange(const Accessible& item, const std::function<void()>& cause) {
  QEventLoop loop;
  bus_.connect(item.service, item.path, "org.a11y.atspi.Event.Object", "PropertyChange", &loop,
               SLOT(quit()));
  QTimer::singleShot(maxWait, &loop, [&loop] { loop.exit(1); });
  cause();
  if (loop.exec() != 0)
    throw TimedOut("the event that " + item.name + " has changed");
}

std::optional<Accessible> ScreenReader::program(pid_t process) const {
  for (const Reference& each : childrenOf(bus_, registry, rootPath)) {
    const QDBusReply<uint> owner = bus_.interface()->servicePid(each.service);
    if (owner.isValid() && owner.value() == static_cast<uint>(process))
      return read(each.service, each.path);
  }
  return std::nullopt;
}

Accessible ScreenReader::read(const QString& service, const QString& path) const {
  Accessible item;
  item.service = service;
  item.path = path;
  const auto text = [&](const char* name) {
    return property(bus_, service, path, accessibleInterface, name).toString().toStdString();
  };
  item.name = text("Name");
  item.description = text("Description");
  item.role = call(bus_, service, path, accessibleInterface, "GetRoleName")
                  .front()
                  .toString()
                  .toStdString();
  const auto words =
      qdbus_cast<QList<uint>>(call(bus_, service, path, accessibleInterface, "GetState").front());
  const auto has = [&words](State state) {
    return (words.value(state / 32) >> (state % 32) & 1U) != 0;
  };
  item.isEnabled = has(enabled);
  item.isChecked = has(checked);
  item.isFocusable = has(focusable);
  item.isFocused = has(focused);
  item.isShowing = has(showing);
  item.isExpanded = has(expanded);
  const auto interfaces =
      call(bus_, service, path, accessibleInterface, "GetInterfaces").front().toStringList();
  if (interfaces.contains(componentInterface))
    item.place = qdbus_cast<QRect>(
        call(bus_, service, path, componentInterface, "GetExtents", {0U}).front());
  for (const Reference& child : childrenOf(bus_, service, path))
    item.children.push_back(read(child.service, child.path));
  return item;
}

std::vector<std::string> ScreenReader::actions(const Accessible& item) const {
  const int count = property(bus_, item.service, item.path, actionInterface, "NActions").toInt();
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i)
    names.push_back(call(bus_, item.service, item.path, actionInterface, "GetName", {i})
                        .front()
                        .toString()
                        .toStdString());
  return names;
}

int ScreenReader::indexOf(const Accessible& item, const std::string& action) const {
  const std::vector<std::string> names = actions(item);
  const auto found = std::find(names.begin(), names.end(), action);
  if (found == names.end())
    throw std::runtime_error(item.name + " has no action called " + action);
  return static_cast<int>(found - names.begin());
}

void ScreenReader::perform(const Accessible& item, const std::string& action) const {
  call(bus_, item.service, item.path, actionInterface, "DoAction", {indexOf(item, action)});
}

void ScreenReader::performWithoutReply(const Accessible& item, const std::string& action) const {
  QDBusMessage message =
      QDBusMessage::createMethodCall(item.service, item.path, actionInterface, "DoAction");
  message.setArguments({indexOf(item, action)});
  bus_.send(message);
}

} // namespace driftmark::test
