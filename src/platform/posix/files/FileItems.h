#pragma once

#include <array>
#include <string>
#include <string_view>
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

/// Moves like `moveTree`, but a copy between volumes leaves the original, under a hidden name
/// beside `from` that is returned in `kept`. After a move within a volume `kept` is empty.
int moveTreeKeeping(const std::string& from, const std::string& to, std::string& kept);

/// Undoes such a move by renaming: the item at `kept`, or at `to` when that is empty, is at `from`
/// again. EEXIST when `from` is taken; nothing has changed then.
int moveTreeBack(const std::string& from, const std::string& to, const std::string& kept);

/// Whether the folders that hold the two items are known to be on different volumes.
bool areOnTwoVolumes(const std::string& one, const std::string& other);

// ItemRemoval.cpp

/// Removes an item, however deep its folders, and never through links. A folder that its owner may
/// not change is made changeable first. Nothing is removed where the parent folder may not be
/// changed.
int removeTree(const std::string& path);

// FileCalls.cpp: what Linux and macOS do in different ways, or what takes several calls

/// Whether an item has this name, a link to nothing included.
bool itemExists(const std::string& path);

/// Whether the item with this name is a symbolic link.
bool isLink(const std::string& path);

/// Whether both paths lead to the same item, links followed. False unless both exist.
bool areSameItem(const std::string& one, const std::string& other);

/// Whether this is a folder of this user that nobody else can enter. A link is none.
bool isPrivateFolder(const std::string& path);

/// Renames an item. EEXIST when the new name is taken.
int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);

/// Lists the names in an open folder, without "." and "..".
int listFolder(int folder, std::vector<std::string>& names);

/// The times of the last access and the last change, in the order that the system's calls take.
std::array<timespec, 2> accessAndChangeTimes(const struct stat& information);

/// Writes all of `bytes` to an open file. After an error a part of them may be written.
int writeAll(int file, std::string_view bytes);

/// Flushes the content of an open item to the disk.
int flushToDisk(int item);

/// Copies extended attributes and access control lists between open items, without those that the
/// other volume does not support.
int copyAttributes(int from, int to);

} // namespace driftmark
