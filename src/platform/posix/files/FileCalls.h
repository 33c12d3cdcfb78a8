#pragma once

#include <array>
#include <string>
#include <vector>

#include <sys/stat.h>

/// Calls for files that Linux and macOS do in different ways, or in several steps. They return 0 or
/// an error number. Any thread.
namespace driftmark::file_calls {

/// Renames an item; EEXIST when something has the new name already.
int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);

/// The names in an open folder but for "." and "..".
int listFolder(int folder, std::vector<std::string>& names);

/// When an item was read and written last, in the order that the system sets them.
std::array<timespec, 2> times(const struct stat& information);

/// Brings what was written to an open item to the disk.
int flush(int item);

/// Copies extended attributes, and access lists where a system keeps them apart; those that the
/// other volume does not take are left out.
int copyAttributes(int from, int to);

} // namespace driftmark::file_calls
