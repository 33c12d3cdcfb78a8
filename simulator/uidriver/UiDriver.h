#pragma once

#include "common/Descriptor.h"
#include "uidriver/Window.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace icloud {

/// A user in front of one running program. Every wait ends on an event; one that takes longer
/// than anybody would wait, a program that ends meanwhile, and what a user cannot do (press a
/// button that is not there) throw std::runtime_error. One thread.
class UiDriver {
public:
  using Test = std::function<bool(const Window&)>;

  /// Takes over a connection that a program opened, and waits for its greeting.
  explicit UiDriver(Descriptor connection);
  UiDriver(UiDriver&& other) noexcept;
  UiDriver& operator=(UiDriver&& other) noexcept;
  ~UiDriver();

  /// The program before which this user sits.
  pid_t process() const;
  const std::filesystem::path& program() const;

  /// The visible windows, the topmost last.
  std::vector<Window> windows();

  /// Waits until the topmost window that passes `test` is there.
  Window awaitWindow(const Test& test);
  Window awaitAlert();
  Window awaitMenu();

  /// Waits until no visible window passes `test`.
  void awaitAbsence(const Test& test);

  /// Presses the button of that title.
  void press(const std::string& buttonTitle);

  /// Clicks on the widget of that object name; with "left", "right" or "middle".
  void click(const std::string& objectName, const std::string& mouseButton = "left");

  /// Chooses the entry of that text in an open menu.
  void choose(const std::string& entryText);

  /// Presses a key, named as in "Return", "Escape", "Down" or "Ctrl+Q".
  void key(const std::string& name);

  void type(const std::string& text);

  /// Waits for the panel that asks for a folder, types the path of one and presses the panel's
  /// default button.
  void pickFolder(const std::filesystem::path& folder);

  /// Keeps a picture of the screen, or of one window, in a PNG file.
  void screenshot(const std::filesystem::path& file, std::optional<int> window = std::nullopt);

  /// Waits until the program is gone.
  void awaitEnd();

private:
  class Connection;
  std::unique_ptr<Connection> connection_;
};

} // namespace icloud
