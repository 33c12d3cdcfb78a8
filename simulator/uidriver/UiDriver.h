#pragma once

#include "common/Descriptor.h"
#include "uidriver/Window.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace icloud {

/// Drives the windows of one running program as a user would. Waits end on an event that the
/// program sends. A wait that times out, a program that ends meanwhile, and input that a user could
/// not give (a press of a button that does not exist) throw std::runtime_error. One thread.
class UiDriver {
public:
  using Test = std::function<bool(const Window&)>;

  /// Takes over the connection of a program's plug-in and waits for its first line.
  explicit UiDriver(Descriptor connection);
  UiDriver(UiDriver&& other) noexcept;
  UiDriver& operator=(UiDriver&& other) noexcept;
  ~UiDriver();

  pid_t process() const;
  const std::filesystem::path& program() const;

  /// The visible windows, the topmost last.
  std::vector<Window> windows();

  /// Waits until a visible window passes `test`, and returns the topmost of those.
  Window awaitWindow(const Test& test);
  Window awaitAlert();
  Window awaitMenu();

  /// Waits until no visible window passes `test`.
  void awaitAbsence(const Test& test);

  /// Presses the button with that title.
  void press(const std::string& buttonTitle);

  /// Clicks on the widget with that object name. `mouseButton` is "left", "right" or "middle".
  void click(const std::string& objectName, const std::string& mouseButton = "left");

  /// Chooses the entry with that text in an open menu.
  void choose(const std::string& entryText);

  /// Presses a key, named as in "Return", "Escape", "Down" or "Ctrl+Q".
  void key(const std::string& name);

  void type(const std::string& text);

  /// Waits for Qt's panel for folders, types the path of one and presses the panel's default
  /// button.
  void pickFolder(const std::filesystem::path& folder);

  /// Saves a picture of the screen, or of one window, as a PNG file.
  void screenshot(const std::filesystem::path& file, std::optional<int> window = std::nullopt);

  /// Waits until the program has ended.
  void awaitEnd();

private:
  class Connection;
  std::unique_ptr<Connection> connection_;
};

} // namespace icloud
