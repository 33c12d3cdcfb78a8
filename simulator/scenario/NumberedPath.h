#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace icloud {

/// A path, or many that differ in a number: "{n}" stands for 1 to `count`, all equally wide.
class NumberedPath {
public:
  NumberedPath(std::string_view pattern, std::uint64_t count);

  std::uint64_t count() const { return count_; }

  /// The path with the number `index`, from 1 to `count`.
  std::string at(std::uint64_t index) const;

  /// Whether `path` is one of these.
  bool contains(std::string_view path) const;

  static constexpr std::string_view mark = "{n}";

private:
  std::string prefix_;
  std::string suffix_;
  std::uint64_t count_;
  std::size_t width_ = 0; ///< 0: no number in it
};

} // namespace icloud
