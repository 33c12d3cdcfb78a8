#include "scenario/KnownFiles.h"

#include <algorithm>

namespace icloud {

bool KnownFiles::contains(std::string_view path) const {
  return single_.contains(path) ||
         std::any_of(many_.begin(), many_.end(),
                     [&](const NumberedPath& paths) { return paths.contains(path); });
}

void KnownFiles::add(NumberedPath paths) {
  if (paths.count() == 1)
    single_.insert(paths.at(1));
  else
    many_.push_back(std::move(paths));
}

} // namespace icloud
