#pragma once

#include "scenario/UserStep.h"
#include "uidriver/UiDriver.h"

#include <filesystem>
#include <functional>
#include <string>

namespace icloud {

/// What a user works with besides the program.
struct UserContext {
  std::filesystem::path screenshots; ///< the folder for them
  std::filesystem::path drive;
  std::filesystem::path brctl;
};

/// Executes the steps of a scenario's user in a program. Errors as `UiDriver` reports them.
class UserSteps {
public:
  using Report = std::function<void(const std::string& text)>;

  /// `report` receives what the user observes, `reportMenu` what a menu shows.
  UserSteps(UiDriver driver, UserContext context, Report report, Report reportMenu);

  void operator()(const OpenMenu& step);
  void operator()(const CloseMenu& step);
  void operator()(const ChooseEntry& step);
  void operator()(const FindEntry& step);
  void operator()(const SeeText& step);
  void operator()(const PressButton& step);
  void operator()(const PressKey& step);
  void operator()(const PickFolder& step);
  void operator()(const OpenFile& step);
  void operator()(const MeasureDisk& step);
  void operator()(const TakeScreenshot& step); ///< numbers the files from 01
  void operator()(const ReadMenu& step);
  void operator()(const ReadStrip& step);
  void operator()(const AwaitExit& step);

private:
  Window openMenu();

  UiDriver driver_;
  UserContext context_;
  Report report_;
  Report reportMenu_;
  int screenshotCount_ = 0;
};

} // namespace icloud
