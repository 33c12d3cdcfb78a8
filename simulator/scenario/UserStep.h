#pragma once

#include "scenario/Action.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <variant>

namespace icloud {

class ScenarioLine;

/// Waits for an event of the scenario or a line of the log. It comes after the line that the
/// previous step of this kind waited for.
struct AwaitLine {
  std::string pattern; ///< with the wildcards of `matchesGlob`, like all patterns here
};

/// Waits until the program has ended.
struct AwaitExit {};

struct Pause {
  Milliseconds duration{};
};

struct OpenMenu {};
struct CloseMenu {};

/// Chooses an entry of the open menu. The menu closes.
struct ChooseEntry {
  std::string pattern;
};

/// Types the path of a folder into the folder panel and presses the panel's default button.
struct PickFolder {
  std::string path; ///< absolute, or relative to the drive
};

/// Opens a file of the drive in some application, which reads it. Contents that are only in iCloud
/// are downloaded.
struct OpenFile {
  std::string path; ///< relative to the drive
};

/// Measures how much space a file or a folder of the drive takes up on this disk.
struct MeasureDisk {
  std::string path; ///< relative to the drive
  std::uint64_t least = 0;
  std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
};

/// Looks for an entry in the open menu.
struct FindEntry {
  std::string pattern;
  std::optional<bool> checked; ///< absent: either way
};

/// Waits for a window with a text that matches.
struct SeeText {
  std::string pattern;
};

struct PressButton {
  std::string title;
};

struct PressKey {
  std::string name; ///< as in "Return" or "Ctrl+Q"
};

/// Saves a picture of the whole screen.
struct TakeScreenshot {
  std::string name;
};

/// Starts the steps again. Nothing follows it.
struct RepeatUserSteps {};

/// Reports what the open menu shows.
struct ReadMenu {};

/// Reports what the item in the menu bar shows.
struct ReadStrip {};

using UserAction = std::variant<AwaitLine, AwaitExit, Pause, OpenMenu, CloseMenu, ChooseEntry,
                                FindEntry, SeeText, PressButton, PressKey, PickFolder, OpenFile,
                                MeasureDisk, TakeScreenshot, ReadMenu, ReadStrip, RepeatUserSteps>;

/// One line of a scenario that its user carries out.
struct UserStep {
  UserAction action;
  unsigned line = 0;
  std::string text; ///< as it was written, without the first word
};

/// Reads the action of a user step, its verb first. Throws ScenarioError.
UserAction readUserAction(ScenarioLine& line);

} // namespace icloud
