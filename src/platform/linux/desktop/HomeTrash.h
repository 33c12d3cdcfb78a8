#pragma once

#include <string>

namespace driftmark {

/// Moves an item to the trash in the user's data folder (`XDG_DATA_HOME`), laid out as the desktops
/// share it, with the note that lets the item be put back. Qt's own function is of no use: it
/// leaves folders on other volumes alone, and without a data folder it moves items into the working
/// directory. Returns 0 or an error number. Any thread.
int moveToHomeTrash(const std::string& path);

} // namespace driftmark
