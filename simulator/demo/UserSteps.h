#pragma once

#include "scenario/UserStep.h"
#include "uidriver/UiDriver.h"

#include <filesystem>
#include <functional>
#include <string>

namespace icloud {

/// What a user has before them besides the program.
struct Surroundings {
  std::filesystem::path pictures; ///< the folder for those that are taken
  std::filesystem::path drive;
  std::filesystem::path brctl;
};

/// Does what a scenario tells a user to do before the program. Failures as `UiDriver` says.
class UserSteps {
public:
  using Tell = std::function<void(const std::string& text)>;

  /// Pictures are numbered from 01. `tell` hears what the user did or saw beyond the words of the
  /// step, `tellMenu` what a menu shows.
  UserSteps(UiDriver user, Surroundings surroundings, Tell tell, Tell tellMenu);

  void operator()(const OpenMenu& act);
  void operator()(const CloseMenu& act);
  void operator()(const ChooseEntry& act);
  void operator()(const FindEntry& act);
  void operator()(const SeeText& act);
  void operator()(const PressButton& act);
  void operator()(const PressKey& act);
  void operator()(const PickFolder& act);
  void operator()(const OpenFile& act);
  void operator()(const MeasureDisk& act);
  void operator()(const TakePicture& act);
  void operator()(const ReadMenu& act);
  void operator()(const ReadStrip& act);
  void operator()(const AwaitExit& act);

private:
  Window openMenu();
  void awaitNoMenu();

  UiDriver user_;
  Surroundings surroundings_;
  Tell tell_;
  Tell tellMenu_;
  int pictureCount_ = 0;
};

} // namespace icloud
