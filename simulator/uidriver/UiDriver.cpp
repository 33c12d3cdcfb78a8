#include "uidriver/UiDriver.h"

#include "uidriver/Connection.h"

#include <algorithm>

namespace icloud {
namespace {

using Json = nlohmann::json;

Window::Kind kindNamed(const std::string& name) {
  if (name == "alert")
    return Window::Kind::alert;
  if (name == "dialog")
    return Window::Kind::dialog;
  if (name == "menu")
    return Window::Kind::menu;
  return name == "tooltip" ? Window::Kind::tooltip : Window::Kind::other;
}

Place placeIn(const Json& json) {
  return {.x = json[0], .y = json[1], .width = json[2], .height = json[3]};
}

Button buttonIn(const Json& json) {
  return {.title = json["title"],
          .isDefault = json["isDefault"],
          .isEnabled = json["isEnabled"],
          .isChecked = json["isChecked"]};
}

Part partIn(const Json& json) {
  return {.name = json["name"],
          .className = json["class"],
          .place = placeIn(json["place"]),
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

template <typename Thing> std::vector<Thing> allIn(const Json& json, Thing (*read)(const Json&)) {
  std::vector<Thing> things;
  for (const Json& one : json)
    things.push_back(read(one));
  return things;
}

Window windowIn(const Json& json) {
  return {.number = json["number"],
          .className = json["class"],
          .kind = kindNamed(json["kind"]),
          .title = json["title"],
          .place = placeIn(json["place"]),
          .isModal = json["isModal"],
          .isActive = json["isActive"],
          .texts = json["texts"],
          .buttons = allIn(json["buttons"], buttonIn),
          .parts = allIn(json["parts"], partIn),
          .entries = allIn(json["entries"], entryIn)};
}

constexpr const char* nameInPanel = "fileNameEdit";

bool asksForAFolder(const Window& window) {
  return std::any_of(window.parts.begin(), window.parts.end(),
                     [](const Part& part) { return part.name == nameInPanel; });
}

UiDriver::Test isOfKind(Window::Kind kind) {
  return [kind](const Window& window) { return window.kind == kind; };
}

} // namespace

UiDriver::UiDriver(Descriptor connection)
    : connection_(std::make_unique<Connection>(std::move(connection))) {}
UiDriver::UiDriver(UiDriver&&) noexcept = default;
UiDriver& UiDriver::operator=(UiDriver&&) noexcept = default;
UiDriver::~UiDriver() = default;

pid_t UiDriver::process() const {
  return connection_->process();
}

const std::filesystem::path& UiDriver::program() const {
  return connection_->program();
}

std::vector<Window> UiDriver::windows() {
  return allIn(connection_->ask({{"do", "windows"}})["windows"], windowIn);
}

Window UiDriver::awaitWindow(const Test& test) {
  while (true) {
    auto visible = windows();
    const auto found = std::find_if(visible.rbegin(), visible.rend(), test);
    if (found != visible.rend())
      return std::move(*found);
    connection_->awaitNotice();
  }
}

Window UiDriver::awaitAlert() {
  return awaitWindow(isOfKind(Window::Kind::alert));
}

Window UiDriver::awaitMenu() {
  return awaitWindow(isOfKind(Window::Kind::menu));
}

void UiDriver::awaitAbsence(const Test& test) {
  auto visible = windows();
  while (std::any_of(visible.begin(), visible.end(), test)) {
    connection_->awaitNotice();
    visible = windows();
  }
}

void UiDriver::press(const std::string& buttonTitle) {
  connection_->ask({{"do", "press"}, {"title", buttonTitle}});
}

void UiDriver::click(const std::string& objectName, const std::string& mouseButton) {
  connection_->ask({{"do", "click"}, {"name", objectName}, {"button", mouseButton}});
}

void UiDriver::choose(const std::string& entryText) {
  connection_->ask({{"do", "choose"}, {"text", entryText}});
}

void UiDriver::key(const std::string& name) {
  connection_->ask({{"do", "key"}, {"key", name}});
}

void UiDriver::type(const std::string& text) {
  connection_->ask({{"do", "type"}, {"text", text}});
}

// What is proposed while somebody types would take the first click; it goes when the keyboard does.
void UiDriver::pickFolder(const std::filesystem::path& folder) {
  const Window panel = awaitWindow(asksForAFolder);
  click(nameInPanel);
  key("Ctrl+A");
  type(folder);
  key("Tab");
  press(panel.defaultButton().title);
}

void UiDriver::screenshot(const std::filesystem::path& file, std::optional<int> window) {
  Json request{{"do", "picture"}, {"file", file.string()}};
  if (window)
    request["window"] = *window;
  connection_->ask(std::move(request));
}

void UiDriver::awaitEnd() {
  connection_->awaitEnd();
}

} // namespace icloud
