#pragma once

#include "scenario/NumberedPath.h"

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// The files that the lines of a scenario have made so far.
class KnownFiles {
public:
  bool contains(std::string_view path) const;
  void add(NumberedPath paths);

private:
  std::set<std::string, std::less<>> single_;
  std::vector<NumberedPath> many_;
};

} // namespace icloud
