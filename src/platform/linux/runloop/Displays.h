#pragma once

#include "ports/Environment.h"
#include "ports/SystemLog.h"

#include <string>
#include <vector>

namespace driftmark {

/// Which display the windows are shown on. Main thread only.
class Displays {
public:
  /// The exit status of a program whose display cannot be opened.
  static constexpr int cannotBeOpened = 3;

  /// `count` arguments of the program, which outlive this object.
  Displays(const Environment& environment, int count, char* arguments[]);
  Displays(const Displays&) = delete;
  Displays& operator=(const Displays&) = delete;

  /// The arguments for a QApplication, ended by a null pointer and valid as long as this object:
  /// those of the program, and before them the platforms of Qt to try. X is tried first wherever
  /// there is an X display: under Wayland no program may place its windows. Without a display,
  /// windows are drawn in memory only. What the user has chosen, by an argument or by
  /// QT_QPA_PLATFORM, holds instead.
  std::vector<char*>& applicationArguments() { return arguments_; }

  /// From now on until `opened` is called, a display that Qt cannot open ends the process, and
  /// standard error names it.
  void willOpen() const;

  /// Logs that the program is invisible if there is no display.
  void opened(SystemLog& systemLog) const;

private:
  std::string option_ = "-platform";
  std::string platforms_; ///< the value of that option; empty when QT_QPA_PLATFORM is set
  std::string choice_;    ///< the variables and arguments that decide
  std::vector<char*> arguments_;
};

} // namespace driftmark
