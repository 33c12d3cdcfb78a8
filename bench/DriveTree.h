#pragma once

#include "Random.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace driftmark::bench {

/// An invented drive, walked folder by folder: distinct paths in realistic folders, 3 to 8 deep,
/// with realistic names.
class DriveTree {
public:
  explicit DriveTree(std::uint64_t seed) : random_(seed) {}

  /// The next file, from "/com~apple~CloudDocs" on. Valid until the next call.
  std::string_view nextPath();

  /// How many folders hold the files given so far.
  std::size_t folders() const { return folders_; }

private:
  /// The current folder, or one above it.
  struct Level {
    std::size_t end; ///< where the folder's path ends in `path_`
    std::unordered_set<std::string> subfolders;
  };

  void enterNextFolder();
  void descend();
  std::string folderName();
  std::string fileName();
  std::string date();

  Random random_;
  std::string path_ = std::string(container);
  std::vector<Level> levels_{Level{container.size(), {}}};
  std::unordered_set<std::string> names_; ///< of the current folder's files
  std::size_t filesLeft_ = 0;
  std::size_t style_ = 0;
  std::size_t number_ = 0;
  std::size_t folders_ = 0;

  static constexpr std::string_view container = "/com~apple~CloudDocs";
};

} // namespace driftmark::bench
