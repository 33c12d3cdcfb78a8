#include "scenario/PersonStepReader.h"

#include <array>
#include <string_view>

namespace icloud {
namespace {

PersonAct readAwait(ScenarioLine& line) {
  if (line.accept("exit"))
    return AwaitExit{};
  return AwaitLine{line.quoted("a pattern or \"exit\"")};
}

PersonAct readFind(ScenarioLine& line) {
  FindEntry entry{line.quoted("a pattern"), std::nullopt};
  if (line.accept("checked"))
    entry.checked = true;
  else if (line.accept("unchecked"))
    entry.checked = false;
  return entry;
}

PersonAct readOpen(ScenarioLine& line) {
  if (line.accept("menu"))
    return OpenMenu{};
  return OpenFile{line.quoted("the path of a file or \"menu\"")};
}

PersonAct readClose(ScenarioLine& line) {
  line.require("menu");
  return CloseMenu{};
}

PersonAct readMeasure(ScenarioLine& line) {
  MeasureDisk disk;
  disk.path = line.quoted("a path");
  if (line.accept("at-least"))
    disk.least = line.size();
  else if (line.accept("at-most"))
    disk.most = line.size();
  return disk;
}

PersonAct readShot(ScenarioLine& line) {
  TakePicture picture{line.quoted("a name")};
  if (picture.name.empty() || picture.name.find('/') != std::string::npos)
    line.fail("the name of a picture is part of a file's name");
  return picture;
}

PersonAct readRead(ScenarioLine& line) {
  if (line.accept("strip"))
    return ReadStrip{};
  line.require("menu");
  return ReadMenu{};
}

struct Verb {
  std::string_view word;
  PersonAct (*read)(ScenarioLine&);
};

constexpr std::array<Verb, 13> verbs{{
    {"awaits", readAwait},
    {"pauses", [](ScenarioLine& line) -> PersonAct { return Pause{line.duration("a duration")}; }},
    {"opens", readOpen},
    {"closes", readClose},
    {"chooses",
     [](ScenarioLine& line) -> PersonAct { return ChooseEntry{line.quoted("a pattern")}; }},
    {"finds", readFind},
    {"sees", [](ScenarioLine& line) -> PersonAct { return SeeText{line.quoted("a pattern")}; }},
    {"presses",
     [](ScenarioLine& line) -> PersonAct { return PressButton{line.quoted("a title")}; }},
    {"hits", [](ScenarioLine& line) -> PersonAct { return PressKey{line.quoted("a key")}; }},
    {"picks", [](ScenarioLine& line) -> PersonAct { return PickFolder{line.quoted("a path")}; }},
    {"measures", readMeasure},
    {"shot", readShot},
    {"reads", readRead},
}};

} // namespace

PersonAct readPersonAct(ScenarioLine& line) {
  const std::string word = line.word("what the person does");
  for (const Verb& verb : verbs)
    if (verb.word == word)
      return verb.read(line);
  line.fail("a person knows no \"" + word + "\"");
}

} // namespace icloud
