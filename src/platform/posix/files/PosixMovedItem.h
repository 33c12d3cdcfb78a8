#pragma once

#include "ports/FileSystem.h"

#include <memory>
#include <string>
#include <variant>

namespace driftmark {

/// An item after `moveTreeKeeping`, with the paths that were passed to it. Any thread.
class PosixMovedItem final : public MovedItem {
public:
  PosixMovedItem(std::string from, std::string to, std::string kept);
  PosixMovedItem(const PosixMovedItem&) = delete;
  PosixMovedItem& operator=(const PosixMovedItem&) = delete;
  ~PosixMovedItem() override;

  /// Moves between these paths. The error names `from`.
  static std::variant<std::unique_ptr<MovedItem>, PlatformError> move(std::string from,
                                                                      std::string to);

  std::optional<PlatformError> putBack() override;

private:
  const std::string from_;
  const std::string to_;
  std::string kept_;
};

} // namespace driftmark
