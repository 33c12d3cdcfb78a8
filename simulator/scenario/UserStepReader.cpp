#include "scenario/UserStepReader.h"

#include <array>
#include <string_view>

namespace icloud {
namespace {

UserAction readAwait(ScenarioLine& line) {
  if (line.accept("exit"))
    return AwaitExit{};
  return AwaitLine{line.quoted("a pattern or \"exit\"")};
}

UserAction readFind(ScenarioLine& line) {
  FindEntry entry{line.quoted("a pattern"), std::nullopt};
  if (line.accept("checked"))
    entry.checked = true;
  else if (line.accept("unchecked"))
    entry.checked = false;
  return entry;
}

UserAction readOpen(ScenarioLine& line) {
  if (line.accept("menu"))
    return OpenMenu{};
  return OpenFile{line.quoted("the path of a file or \"menu\"")};
}

UserAction readClose(ScenarioLine& line) {
  line.require("menu");
  return CloseMenu{};
}

UserAction readMeasure(ScenarioLine& line) {
  MeasureDisk disk;
  disk.path = line.quoted("a path");
  if (line.accept("at-least"))
    disk.least = line.size();
  else if (line.accept("at-most"))
    disk.most = line.size();
  return disk;
}

UserAction readShot(ScenarioLine& line) {
  TakePicture picture{line.quoted("a name")};
  if (picture.name.empty() || picture.name.find('/') != std::string::npos)
    line.fail("the name of a picture is part of a file's name");
  return picture;
}

UserAction readRead(ScenarioLine& line) {
  if (line.accept("strip"))
    return ReadStrip{};
  line.require("menu");
  return ReadMenu{};
}

struct Verb {
  std::string_view word;
  UserAction (*read)(ScenarioLine&);
};

constexpr std::array<Verb, 13> verbs{{
    {"awaits", readAwait},
    {"pauses", [](ScenarioLine& line) -> UserAction { return Pause{line.duration("a duration")}; }},
    {"opens", readOpen},
    {"closes", readClose},
    {"chooses",
     [](ScenarioLine& line) -> UserAction { return ChooseEntry{line.quoted("a pattern")}; }},
    {"finds", readFind},
    {"sees", [](ScenarioLine& line) -> UserAction { return SeeText{line.quoted("a pattern")}; }},
    {"presses",
     [](ScenarioLine& line) -> UserAction { return PressButton{line.quoted("a title")}; }},
    {"hits", [](ScenarioLine& line) -> UserAction { return PressKey{line.quoted("a key")}; }},
    {"picks", [](ScenarioLine& line) -> UserAction { return PickFolder{line.quoted("a path")}; }},
    {"measures", readMeasure},
    {"shot", readShot},
    {"reads", readRead},
}};

} // namespace

UserAction readUserAction(ScenarioLine& line) {
  const std::string word = line.word("what the user does");
  for (const Verb& verb : verbs)
    if (verb.word == word)
      return verb.read(line);
  line.fail("a user knows no \"" + word + "\"");
}

} // namespace icloud
