// How a line of the scenario user is read.

#include "scenario/UserStep.h"

#include "scenario/ScenarioLine.h"

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
  FindEntry find{line.quoted("a pattern"), std::nullopt};
  if (line.accept("checked"))
    find.checked = true;
  else if (line.accept("unchecked"))
    find.checked = false;
  return find;
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
  MeasureDisk measure;
  measure.path = line.quoted("a path");
  if (line.accept("at-least"))
    measure.least = line.size();
  else if (line.accept("at-most"))
    measure.most = line.size();
  return measure;
}

UserAction readScreenshot(ScenarioLine& line) {
  TakeScreenshot screenshot{line.quoted("a name")};
  if (screenshot.name.empty() || screenshot.name.find('/') != std::string::npos)
    line.fail("the name of a screenshot becomes part of a file's name");
  return screenshot;
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

constexpr std::array<Verb, 14> verbs{{
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
    {"shot", readScreenshot},
    {"reads", readRead},
    {"repeats", [](ScenarioLine&) -> UserAction { return RepeatUserSteps{}; }},
}};

} // namespace

UserAction readUserAction(ScenarioLine& line) {
  const std::string word = line.word("what the user does");
  for (const Verb& verb : verbs)
    if (verb.word == word)
      return verb.read(line);
  line.fail("unknown verb of the user \"" + word + "\"");
}

} // namespace icloud
