#pragma once

#include "scenario/Action.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <variant>

namespace icloud {

/// Waits for a line of the story or of the log; one after the line that was awaited before.
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

/// Chooses an entry of the open menu, which closes.
struct ChooseEntry {
  std::string pattern;
};

/// Types the path of a folder into the panel that asks for one, and presses its default button.
struct PickFolder {
  std::string path; ///< absolute, or relative to the drive
};

/// Opens a file of the drive in some application, which reads it: contents that are only in iCloud
/// are downloaded.
struct OpenFile {
  std::string path; ///< relative to the drive
};

/// Tells what a file or a folder of the drive takes up on this disk.
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

/// Waits for a window in which a text matches.
struct SeeText {
  std::string pattern;
};

struct PressButton {
  std::string title;
};

struct PressKey {
  std::string name; ///< as in "Return" or "Ctrl+Q"
};

/// Keeps a picture of the whole screen.
struct TakePicture {
  std::string name;
};

/// Tells what the open menu shows.
struct ReadMenu {};

/// Tells what the item in the menu bar shows.
struct ReadStrip {};

using UserAction = std::variant<AwaitLine, AwaitExit, Pause, OpenMenu, CloseMenu, ChooseEntry,
                                FindEntry, SeeText, PressButton, PressKey, PickFolder, OpenFile,
                                MeasureDisk, TakePicture, ReadMenu, ReadStrip>;

/// One line of a scenario that a user at the screen obeys.
struct UserStep {
  UserAction act;
  unsigned line = 0;
  std::string text; ///< as it was written, without the first word
};

} // namespace icloud
