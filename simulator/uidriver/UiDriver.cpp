// What a driver asks of its program, and how it waits for windows.

#include "uidriver/UiDriver.h"

#include "uidriver/Connection.h"

#include <algorithm>
#include <utility>

namespace icloud {
namespace {

constexpr const char* folderPanelInput = "fileNameEdit";

bool isFolderPanel(const Window& window) {
  return std::any_of(window.widgets.begin(), window.widgets.end(),
                     [](const Widget& widget) { return widget.name == folderPanelInput; });
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
  return connection_->windows();
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
  connection_->request({{"do", "press"}, {"title", buttonTitle}});
}

void UiDriver::click(const std::string& objectName, const std::string& mouseButton) {
  connection_->request({{"do", "click"}, {"name", objectName}, {"button", mouseButton}});
}

void UiDriver::choose(const std::string& entryText) {
  connection_->request({{"do", "choose"}, {"text", entryText}});
}

void UiDriver::key(const std::string& name) {
  connection_->request({{"do", "key"}, {"key", name}});
}

void UiDriver::type(const std::string& text) {
  connection_->request({{"do", "type"}, {"text", text}});
}

// While the input has the keyboard, its list of completions takes the first click. Tab closes the
// list.
void UiDriver::pickFolder(const std::filesystem::path& folder) {
  const Window panel = awaitWindow(isFolderPanel);
  click(folderPanelInput);
  key("Ctrl+A");
  type(folder);
  key("Tab");
  press(panel.defaultButton().title);
}

void UiDriver::screenshot(const std::filesystem::path& file, std::optional<int> window) {
  nlohmann::json message{{"do", "screenshot"}, {"file", file.string()}};
  if (window)
    message["window"] = *window;
  connection_->request(std::move(message));
}

void UiDriver::awaitEnd() {
  connection_->awaitEnd();
}

} // namespace icloud
