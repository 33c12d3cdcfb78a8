#pragma once

#include <array>
#include <string>
#include <vector>

#include <sys/stat.h>

/// Copying, moving and removing of items: files, links, and folders with all that they hold. The
/// functions return 0 or an error number. Paths are absolute. Any thread.
namespace driftmark {

// ItemCopy.cpp

/// Copies an item to `to`, where nothing exists yet, with modes, times and extended attributes, and
/// with owners where the user may give items away. The copy has reached the disk when this returns.
/// A failed copy leaves a part at `to`. Devices, sockets and pipes are not supported.
int copyTree(const std::string& from, const std::string& to);

// ItemMove.cpp

/// Moves an item to `to`, where nothing exists yet, between volumes too. At every moment each of
/// the two names stands for a whole item or for nothing: a copy between volumes is made under a
/// hidden name beside `to`, and the original is removed under a hidden name beside `from`. After an
/// error the item is still at `from`.
int moveTree(const std::string& from, const std::string& to);

/// Whether the folders that hold the two items are known to be on different volumes.
bool areOnTwoVolumes(const std::string& one, const std::string& other);

// ItemRemoval.cpp

/// Removes an item, however deep its folders, and never through links. A folder that its owner may
/// not change is made changeable first. Nothing is removed where the parent folder may not be
/// changed.
int removeTree(const std::string& path);

// FileCalls.cpp: what Linux and macOS do in different ways, or what takes several calls

/// Renames an item. EEXIST when the new name is taken.
int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);

/// Lists the names in an open folder, without "." and "..".
int listFolder(int folder, std::vector<std::string>& names);

/// The times of the last access and the last change, in the order that the system's calls take.
std::array<timespec, 2> accessAndChangeTimes(const struct stat& information);

/// Flushes the content of an open item to the disk.
int flushToDisk(int item);

/// Copies extended attributes and access control lists between open items, without those that the
/// other volume does not support.
int copyAttributes(int from, int to);

} // namespace driftmark
