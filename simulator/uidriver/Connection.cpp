// How the driver exchanges messages with the plug-in: one JSON object a line.

#include "uidriver/Connection.h"

#include "common/SystemFailure.h"
#include "process/Pipe.h"

#include <array>
#include <chrono>
#include <stdexcept>

#include <sys/socket.h>

namespace icloud {
namespace {

using Json = nlohmann::json;

constexpr std::chrono::seconds timeout{30};

Window::Kind kindNamed(const std::string& name) {
  if (name == "alert")
    return Window::Kind::alert;
  if (name == "dialog")
    return Window::Kind::dialog;
  if (name == "menu")
    return Window::Kind::menu;
  return name == "tooltip" ? Window::Kind::tooltip : Window::Kind::other;
}

Rect rectIn(const Json& json) {
  return {.x = json[0], .y = json[1], .width = json[2], .height = json[3]};
}

Button buttonIn(const Json& json) {
  return {.title = json["title"],
          .isDefault = json["isDefault"],
          .isEnabled = json["isEnabled"],
          .isChecked = json["isChecked"]};
}

Widget widgetIn(const Json& json) {
  return {.name = json["name"],
          .className = json["class"],
          .geometry = rectIn(json["geometry"]),
          .isEnabled = json["isEnabled"],
          .toolTip = json["toolTip"],
          .accessibleName = json["accessibleName"]};
}

MenuEntry entryIn(const Json& json) {
  return {.text = json["text"],
          .isEnabled = json["isEnabled"],
          .isChecked = json["isChecked"],
          .isSeparator = json["isSeparator"],
          .hasSubmenu = json["hasSubmenu"],
          .shortcut = json["shortcut"],
          .toolTip = json["toolTip"]};
}

template <typename Item> std::vector<Item> listIn(const Json& json, Item (*read)(const Json&)) {
  std::vector<Item> items;
  for (const Json& one : json)
    items.push_back(read(one));
  return items;
}

Window windowIn(const Json& json) {
  return {.number = json["number"],
          .className = json["class"],
          .kind = kindNamed(json["kind"]),
          .title = json["title"],
          .geometry = rectIn(json["geometry"]),
          .isModal = json["isModal"],
          .isActive = json["isActive"],
          .texts = json["texts"],
          .buttons = listIn(json["buttons"], buttonIn),
          .widgets = listIn(json["widgets"], widgetIn),
          .entries = listIn(json["entries"], entryIn)};
}

} // namespace

UiDriver::Connection::Connection(Descriptor socket) : socket_(std::move(socket)) {
  const Json hello = nextMessage();
  process_ = hello.at("process").get<pid_t>();
  program_ = hello.at("program").get<std::string>();
}

Json UiDriver::Connection::request(Json message) {
  message["request"] = ++lastRequest_;
  const std::string line = message.dump() + '\n';
  for (std::size_t sent = 0; sent < line.size();) {
    const ssize_t count = send(socket_.get(), line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
    if (count < 0)
      throwSystemFailure("cannot send to the program");
    sent += static_cast<std::size_t>(count);
  }
  Json reply = nextMessage();
  while (!reply.contains("reply"))
    reply = nextMessage();
  if (reply.contains("error"))
    throw std::runtime_error(reply["error"].get<std::string>());
  return reply;
}

std::vector<Window> UiDriver::Connection::windows() {
  return listIn(request({{"do", "windows"}})["windows"], windowIn);
}

void UiDriver::Connection::awaitNotice() {
  nextMessage();
}

void UiDriver::Connection::awaitEnd() {
  while (readSome())
    received_.clear();
}

Json UiDriver::Connection::nextMessage() {
  std::size_t end = received_.find('\n');
  for (; end == std::string::npos; end = received_.find('\n'))
    if (!readSome())
      throw std::runtime_error("the program has ended");
  const Json message = Json::parse(received_.substr(0, end));
  received_.erase(0, end + 1);
  return message;
}

bool UiDriver::Connection::readSome() {
  if (!isReadableWithin(socket_.get(), timeout))
    throw std::runtime_error("timed out waiting for the program");
  std::array<char, 65536> bytes;
  const ssize_t count = read(socket_.get(), bytes.data(), bytes.size());
  if (count > 0)
    received_.append(bytes.data(), static_cast<std::size_t>(count));
  return count > 0; // reading from a killed program may fail
}

} // namespace icloud
