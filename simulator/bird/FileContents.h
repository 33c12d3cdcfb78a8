#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace icloud {

/// The bytes of a file as iCloud has them. They are derived from the path of the file in the drive,
/// so that they are the same after every restart.
class FileContents {
public:
  FileContents(std::string_view path, std::uint64_t bytes);

  std::uint64_t size() const { return size_; }

  /// Fills `into` with the bytes from `offset`, a multiple of 8.
  void read(std::uint64_t offset, std::span<char> into) const;

private:
  std::uint64_t seed_;
  std::uint64_t size_;
};

} // namespace icloud
