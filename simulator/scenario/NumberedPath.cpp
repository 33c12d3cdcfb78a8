// Which paths a numbered path stands for.
#include "scenario/NumberedPath.h"

#include <algorithm>
#include <charconv>

namespace icloud {

NumberedPath::NumberedPath(std::string_view pattern, std::uint64_t count) : count_(count) {
  const auto place = pattern.find(mark);
  if (place == std::string_view::npos) {
    prefix_ = pattern;
    return;
  }
  prefix_ = pattern.substr(0, place);
  suffix_ = pattern.substr(place + mark.size());
  width_ = std::to_string(count).size();
}

std::string NumberedPath::at(std::uint64_t index) const {
  if (width_ == 0)
    return prefix_;
  std::string number = std::to_string(index);
  number.insert(0, width_ - number.size(), '0');
  return prefix_ + number + suffix_;
}

bool NumberedPath::contains(std::string_view path) const {
  if (width_ == 0)
    return path == prefix_;
  if (path.size() != prefix_.size() + width_ + suffix_.size() || !path.starts_with(prefix_) ||
      !path.ends_with(suffix_))
    return false;
  const std::string_view digits = path.substr(prefix_.size(), width_);
  std::uint64_t index = 0;
  const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), index);
  return parsed.ec == std::errc{} && parsed.ptr == digits.data() + digits.size() && index >= 1 &&
         index <= count_;
}

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
