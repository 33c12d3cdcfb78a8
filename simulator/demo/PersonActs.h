#pragma once

#include "person/Person.h"
#include "scenario/PersonStep.h"

#include <filesystem>
#include <functional>
#include <string>

namespace icloud {

/// Does what a scenario tells a person to do before the program. Failures as `Person` says.
class PersonActs {
public:
  using Tell = std::function<void(const std::string& text)>;

  /// Pictures go into the folder `pictures`, numbered from 01. `tell` hears what the person did or
  /// saw beyond the words of the step, `tellMenu` what a menu shows.
  PersonActs(Person person, std::filesystem::path pictures, Tell tell, Tell tellMenu);

  void operator()(const OpenMenu& act);
  void operator()(const CloseMenu& act);
  void operator()(const ChooseEntry& act);
  void operator()(const FindEntry& act);
  void operator()(const SeeText& act);
  void operator()(const PressButton& act);
  void operator()(const PressKey& act);
  void operator()(const TakePicture& act);
  void operator()(const ReadMenu& act);
  void operator()(const ReadStrip& act);
  void operator()(const AwaitExit& act);

private:
  Window openMenu();
  void awaitNoMenu();

  Person person_;
  std::filesystem::path pictures_;
  Tell tell_;
  Tell tellMenu_;
  int pictureCount_ = 0;
};

} // namespace icloud
