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

/// Something on the screen as a screen reader is told of it, and what is in it.
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

  /// The first thing of that role, itself or in it; null when there is none.
  const Accessible* first(const std::string& ofRole) const;

  /// The first thing of that role and name that is shown in it, however deep. Throws
  /// std::runtime_error when there is none.
  const Accessible& shown(const std::string& ofRole, const std::string& text) const;

  /// The first thing of that name in it. Throws std::runtime_error when there is none.
  const Accessible& named(const std::string& text) const;
};

/// A screen reader in a session, whose programs are told from now on that there is one. Every wait
/// ends on an event of the accessibility bus; what cannot be read throws std::runtime_error.
class ScreenReader {
public:
  explicit ScreenReader(const SessionBus& session);
  ScreenReader(const ScreenReader&) = delete;
  ScreenReader& operator=(const ScreenReader&) = delete;
  ~ScreenReader();

  /// Waits until what a process shows passes `test`, and reads it.
  Accessible awaitProgram(pid_t process, const std::function<bool(const Accessible&)>& test);

  /// Waits until a property of something has changed because of `cause`.
  void awaitNews(const Accessible& item, const std::function<void()>& cause);

  /// The names of what can be done with something.
  std::vector<std::string> actions(const Accessible& item) const;

  /// Carries out the action of that name.
  void act(const Accessible& item, const std::string& action) const;

private:
  std::optional<Accessible> program(pid_t process) const;
  Accessible read(const QString& service, const QString& path) const;

  QDBusConnection bus_;
};

} // namespace driftmark::test
