#pragma once

#include "desktop/SessionBus.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QRect>
#include <QString>

#include <sys/types.h>

namespace driftmark::test {

/// An item on the screen as screen readers receive it, with its children.
struct Accessible {
  QString service;
  QString path;
  std::string name;
  std::string description;
  std::string role;
  bool isEnabled = false;
  bool isChecked = false;
  bool isFocusable = false;
  bool isFocused = false;
  bool isShowing = false;
  bool isExpanded = false;
  QRect place; ///< on the screen
  std::vector<Accessible> children;

  /// The first item with that role, itself or below it; null when there is none.
  const Accessible* first(const std::string& ofRole) const;

  /// The first item with that role and name that is showing, itself or below it. Throws
  /// std::runtime_error when there is none.
  const Accessible& shown(const std::string& ofRole, const std::string& text) const;

  /// The first child with that name. Throws std::runtime_error when there is none.
  const Accessible& named(const std::string& text) const;
};

/// A screen reader in a session; programs learn from the accessibility bus that it runs. Every wait
/// ends on an event of that bus or throws TimedOut. What cannot be read throws std::runtime_error.
class ScreenReader {
public:
  explicit ScreenReader(const SessionBus& session);
  ScreenReader(const ScreenReader&) = delete;
  ScreenReader& operator=(const ScreenReader&) = delete;
  ~ScreenReader();

  /// Waits until the items of a process pass `test`. Returns them.
  Accessible awaitProgram(pid_t process, const std::function<bool(const Accessible&)>& test);

  /// Runs `cause` and waits for the event that a property of `item` has changed.
  void awaitChange(const Accessible& item, const std::function<void()>& cause);

  /// The names of an item's actions.
  std::vector<std::string> actions(const Accessible& item) const;

  /// Carries out an action of an item.
  void perform(const Accessible& item, const std::string& action) const;

  /// The same for an action that ends the program, which may end before it answers.
  void performWithoutReply(const Accessible& item, const std::string& action) const;

private:
  std::optional<Accessible> program(pid_t process) const;
  Accessible read(const QString& service, const QString& path) const;
  int indexOf(const Accessible& item, const std::string& action) const;

  QDBusConnection bus_;
};

} // namespace driftmark::test
