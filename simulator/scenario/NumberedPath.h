#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// One path, or `count` paths that differ in a number: "{n}" stands for 1 to `count`, padded with
/// zeros to equal width.
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
  std::size_t width_ = 0; ///< of the number; 0: there is none
};

/// The files that the lines of a scenario have created so far.
class KnownFiles {
public:
  bool contains(std::string_view path) const;
  void add(NumberedPath paths);

private:
  std::set<std::string, std::less<>> single_;
  std::vector<NumberedPath> many_;
};

} // namespace icloud
