// What is kept of an item after a move, so that it can go back.

#include "platform/posix/files/PosixMovedItem.h"

#include "platform/posix/SystemErrors.h"
#include "platform/posix/files/FileItems.h"

#include <utility>

namespace driftmark {

PosixMovedItem::PosixMovedItem(std::string from, std::string to, std::string kept)
    : from_(std::move(from)), to_(std::move(to)), kept_(std::move(kept)) {}

PosixMovedItem::~PosixMovedItem() {
  if (!kept_.empty())
    removeTree(kept_);
}

std::variant<std::unique_ptr<MovedItem>, PlatformError> PosixMovedItem::move(std::string from,
                                                                             std::string to) {
  std::string kept;
  if (const int error = moveTreeKeeping(from, to, kept); error != 0)
    return fileError(from, "moved", error);
  return std::make_unique<PosixMovedItem>(std::move(from), std::move(to), std::move(kept));
}

std::optional<PlatformError> PosixMovedItem::putBack() {
  // What could not go back is not removed.
  const std::string kept = std::exchange(kept_, {});
  const int error = moveTreeBack(from_, to_, kept);
  return error == 0 ? std::nullopt : std::optional(fileError(to_, "moved", error));
}

} // namespace driftmark
