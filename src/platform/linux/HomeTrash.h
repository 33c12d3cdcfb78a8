#pragma once

#include <string>

namespace driftmark {

/// Moves an item to the trash in the user's data folder (`XDG_DATA_HOME`), from whatever volume, with
/// the note that lets it be put back. Returns 0 or an error number. Any thread.
int moveToHomeTrash(const std::string& path);

} // namespace driftmark
