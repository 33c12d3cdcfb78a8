#include "monitor/PathTree.h"

#include "monitor/PathHash.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace driftmark {

namespace {

// A reference's lower bits reach this far into a block; its upper bits count this many blocks.
constexpr unsigned offsetBits = 16;
constexpr std::size_t blockSize = std::size_t{1} << offsetBits;
constexpr std::size_t maxBlocks = (std::size_t{1} << (32 - offsetBits)) - 1;

// An entry is a header byte, a length byte, the length again as a word if the byte cannot hold it,
// a folder's index if it is a subfolder, and the name. Bytes never written are 0: no entry
// continues there.
constexpr unsigned valueMask = 7;
constexpr unsigned subfolderMark = 0; // in place of a value
constexpr unsigned continuesBit = 8;  // the entry before it in the block is of the same folder
constexpr std::size_t headerSize = 2;
constexpr std::size_t longLength = 255;

// Many folders hold a subfolder or two and nothing else; the others grow beyond a few soon.
constexpr std::uint32_t smallCapacity = 4;
constexpr std::uint32_t ordinaryCapacity = 16;

std::uint32_t nextCapacity(std::uint32_t capacity) {
  if (capacity == 0)
    return smallCapacity;
  return capacity < ordinaryCapacity ? ordinaryCapacity : capacity * 2;
}

std::uint32_t loadWord(const void* from) {
  std::uint32_t word = 0;
  std::memcpy(&word, from, sizeof word);
  return word;
}

void storeWord(void* to, std::uint32_t word) {
  std::memcpy(to, &word, sizeof word);
}

} // namespace

PathTree::PathTree() : folders_(1) {}

PathTree::Value PathTree::exchange(std::string_view path, Value value, Value kept) {
  const std::size_t slash = path.rfind('/');
  return exchange(enter(path.substr(0, slash)), path.substr(slash + 1), value, kept);
}

PathTree::Value PathTree::exchange(FolderIndex folder, std::string_view name, Value value,
                                   Value kept) {
  Reference reference = successor(folder, name);
  if (reference == noReference) {
    const std::uint32_t hash = hashOf(name, value);
    reference = lookUp(folder, name, value, hash);
    if (reference == noReference) {
      reference = append(folder, name, value);
      link(folder, {reference, hash});
      ++size_;
      remember(folder, reference);
      return 0;
    }
  }
  remember(folder, reference);
  char& header = *at(reference);
  const auto before = static_cast<unsigned char>(header);
  header = static_cast<char>((before & ~valueMask) | (before & kept) | value);
  return static_cast<Value>(before & valueMask);
}

PathTree::Value PathTree::find(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  const std::string_view name = path.substr(slash + 1);
  const FolderIndex folder = enter(path.substr(0, slash), false);
  if (folder == noFolder)
    return 0;
  const Reference reference = lookUp(folder, name, 1, hashOf(name, 1));
  return reference == noReference ? Value{0} : read(reference).value;
}

/// Finds a folder, starting from the deepest folder that its path shares with the cursor.
PathTree::FolderIndex PathTree::enter(std::string_view folder, bool create) {
  if (folder == cursorPath_)
    return cursor_.empty() ? 0 : cursor_.back().folder;

  const std::size_t shorter = std::min(folder.size(), cursorPath_.size());
  const std::size_t common = static_cast<std::size_t>(
      std::mismatch(folder.begin(), folder.begin() + static_cast<std::ptrdiff_t>(shorter),
                    cursorPath_.begin())
          .first -
      folder.begin());
  const auto isOnPath = [&](const Step& step) {
    return step.end <= common && (step.end == folder.size() || folder[step.end] == '/');
  };
  while (!cursor_.empty() && !isOnPath(cursor_.back()))
    cursor_.pop_back();

  std::size_t position = cursor_.empty() ? 0 : cursor_.back().end;
  FolderIndex current = cursor_.empty() ? 0 : cursor_.back().folder;
  while (position < folder.size() && current != noFolder) {
    const std::size_t end = std::min(folder.find('/', position + 1), folder.size());
    current = subfolder(current, folder.substr(position + 1, end - position - 1), create);
    if (current != noFolder) {
      cursor_.push_back({end, current});
      position = end;
    }
  }
  cursorPath_.assign(folder.substr(0, position));
  return current;
}

PathTree::FolderIndex PathTree::subfolder(FolderIndex parent, std::string_view name, bool create) {
  const std::uint32_t hash = hashOf(name, subfolderMark);
  Reference reference = lookUp(parent, name, subfolderMark, hash);
  if (reference == noReference) {
    if (!create)
      return noFolder;
    reference = append(parent, name, subfolderMark);
    link(parent, {reference, hash});
  }
  return loadWord(read(reference).name.data() - sizeof(FolderIndex));
}

/// The entry of that name and kind; the kind is `subfolderMark` or any value.
PathTree::Reference PathTree::lookUp(FolderIndex index, std::string_view name, Value kind,
                                     std::uint32_t hash) const {
  const Folder& folder = folders_[index];
  if (folder.capacity == 0)
    return noReference;
  for (std::uint32_t at = hash;; ++at) {
    const Slot& slot = folder.slots[at & (folder.capacity - 1)];
    if (slot.reference == noReference)
      return noReference;
    if (slot.hash != hash)
      continue;
    const Entry entry = read(slot.reference);
    if (entry.name == name && (entry.value == subfolderMark) == (kind == subfolderMark))
      return slot.reference;
  }
}

/// The entry behind the one found last, when it is the one looked for: paths tend to come again in
/// the order in which they came first.
PathTree::Reference PathTree::successor(FolderIndex folder, std::string_view name) const {
  if (folder != lastFoundFolder_)
    return noReference;
  const std::size_t offset = (lastFound_ & (blockSize - 1)) + read(lastFound_).size;
  if (offset >= blockSize - 1)
    return noReference;
  const Reference next =
      (lastFound_ & ~static_cast<Reference>(blockSize - 1)) | static_cast<Reference>(offset);
  if ((static_cast<unsigned char>(*at(next)) & continuesBit) == 0)
    return noReference;
  const Entry entry = read(next);
  return entry.value != subfolderMark && entry.name == name ? next : noReference;
}

PathTree::Reference PathTree::append(FolderIndex folder, std::string_view name, Value value) {
  const bool isSubfolder = value == subfolderMark;
  const bool isLong = name.size() >= longLength;
  const std::size_t size = headerSize + (isLong ? sizeof(std::uint32_t) : 0) +
                           (isSubfolder ? sizeof(FolderIndex) : 0) + name.size();

  // The last byte of a block stays unused, so that a reference never equals `noReference`.
  const bool newBlock =
      blocks_.empty() || blockUsed_ >= blockSize - 1 || blockUsed_ + size > blockCapacity_;
  if (newBlock) {
    if (blocks_.size() == maxBlocks)
      throw std::length_error("PathTree: too many paths");
    blockCapacity_ = std::max(blockSize, size);
    blocks_.push_back(std::make_unique<char[]>(blockCapacity_));
    blockUsed_ = 0;
  }

  const auto reference = static_cast<Reference>((blocks_.size() - 1) << offsetBits | blockUsed_);
  const bool continues = !newBlock && folder == lastAppendedFolder_;
  char* to = at(reference);
  *to++ = static_cast<char>(value | (continues ? continuesBit : 0U));
  *to++ = static_cast<char>(isLong ? longLength : name.size());
  if (isLong) {
    storeWord(to, static_cast<std::uint32_t>(name.size()));
    to += sizeof(std::uint32_t);
  }
  if (isSubfolder) {
    storeWord(to, static_cast<FolderIndex>(folders_.size()));
    to += sizeof(FolderIndex);
    folders_.emplace_back();
  }
  std::copy(name.begin(), name.end(), to);
  blockUsed_ += size;
  lastAppendedFolder_ = folder;
  return reference;
}

void PathTree::link(FolderIndex index, Slot entry) {
  Folder& folder = folders_[index];
  // An eighth stays free at least, so that every search ends.
  if ((std::uint64_t{folder.count} + 1) * 8 > std::uint64_t{folder.capacity} * 7)
    grow(folder);
  place(folder, entry);
  ++folder.count;
}

void PathTree::grow(Folder& folder) {
  Folder larger;
  larger.capacity = nextCapacity(folder.capacity);
  larger.count = folder.count;
  larger.slots = std::make_unique_for_overwrite<Slot[]>(larger.capacity);
  std::fill_n(larger.slots.get(), larger.capacity, Slot{noReference, 0});
  for (std::uint32_t at = 0; at < folder.capacity; ++at)
    if (folder.slots[at].reference != noReference)
      place(larger, folder.slots[at]);
  folder = std::move(larger);
}

/// Puts an entry into the next free slot from its own on.
void PathTree::place(const Folder& folder, Slot entry) {
  std::uint32_t at = entry.hash;
  while (folder.slots[at & (folder.capacity - 1)].reference != noReference)
    ++at;
  folder.slots[at & (folder.capacity - 1)] = entry;
}

char* PathTree::at(Reference reference) const {
  return blocks_[reference >> offsetBits].get() + (reference & (blockSize - 1));
}

PathTree::Entry PathTree::read(Reference reference) const {
  const char* const from = at(reference);
  const auto value = static_cast<Value>(static_cast<unsigned char>(from[0]) & valueMask);
  std::size_t length = static_cast<unsigned char>(from[1]);
  const char* name = from + headerSize;
  if (length == longLength) {
    length = loadWord(name);
    name += sizeof(std::uint32_t);
  }
  if (value == subfolderMark)
    name += sizeof(FolderIndex);
  return {{name, length}, value, static_cast<std::size_t>(name - from) + length};
}

void PathTree::remember(FolderIndex folder, Reference found) {
  lastFound_ = found;
  lastFoundFolder_ = folder;
}

/// Hashes a name among the subfolders or among the other entries of a folder.
std::uint32_t PathTree::hashOf(std::string_view name, Value value) {
  const auto hash = static_cast<std::uint32_t>(hashBytes(name));
  return value == subfolderMark ? ~hash : hash;
}

} // namespace driftmark
