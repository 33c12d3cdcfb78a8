// Which display Qt is given, and what is reported when there is none.

#include "platform/linux/runloop/Displays.h"

#include "support/Log.h"

#include <array>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include <QGuiApplication>
#include <QString>
#include <QtGlobal>

namespace driftmark {

namespace {

constexpr const char* inMemory = "offscreen";

/// What decided about the display. A message handler receives no argument.
std::string choiceToReport;

QtMessageHandler usualHandler = nullptr;

void endAtFatalMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (type == QtDebugMsg || type == QtWarningMsg) // which only those see who asked for them
    usualHandler(type, context, text);
  if (type != QtFatalMsg)
    return;
  std::cerr << "driftmark: the display cannot be opened: " << choiceToReport << '\n' << std::flush;
  std::_Exit(Displays::cannotBeOpened);
}

bool choosesDisplay(std::string_view argument) {
  if (argument.starts_with("--"))
    argument.remove_prefix(1);
  return argument == "-platform" || argument == "-display";
}

} // namespace

Displays::Displays(const Environment& environment, int count, char* arguments[])
    : arguments_(arguments, arguments + count) {
  const auto add = [this](std::string_view name, std::string_view sign, std::string_view value) {
    choice_.append(choice_.empty() ? "" : ", ").append(name).append(sign).append(value);
  };
  const auto isSet = [&](const char* name) {
    const std::string value = environment.variable(name).value_or("");
    if (!value.empty())
      add(name, "=", value);
    return !value.empty();
  };
  const bool isChosen = isSet("QT_QPA_PLATFORM");
  bool hasX11 = isSet("DISPLAY");
  const bool hasWayland = isSet("WAYLAND_DISPLAY");
  if (!hasX11 && !hasWayland)
    add("DISPLAY and WAYLAND_DISPLAY are not set", "", "");
  for (int index = 1; index + 1 < count; ++index)
    if (choosesDisplay(arguments[index])) {
      add(arguments[index], " ", arguments[index + 1]);
      hasX11 = hasX11 || std::string_view(arguments[index]).ends_with("-display");
    }

  if (!isChosen && count > 0) {
    if (hasX11)
      platforms_ = hasWayland ? "xcb;wayland" : "xcb";
    else
      platforms_ = hasWayland ? "wayland" : inMemory;
    arguments_.insert(arguments_.begin() + 1, {option_.data(), platforms_.data()});
  }
  arguments_.push_back(nullptr);
}

void Displays::willOpen() const {
  choiceToReport = choice_;
  usualHandler = qInstallMessageHandler(endAtFatalMessage);
}

void Displays::opened(SystemLog& systemLog) const {
  qInstallMessageHandler(usualHandler);
  if (platforms_ == inMemory && QGuiApplication::platformName() == inMemory)
    log(systemLog, {"there is no display, so the program is invisible: ", choice_});
}

} // namespace driftmark
