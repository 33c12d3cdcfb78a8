// How dotted versions are compared.

#include "update/Version.h"

#include "support/Numbers.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace driftmark {

namespace {

/// The pieces between the dots as numbers; empty pieces are left out.
std::vector<std::int64_t> pieces(std::string_view version) {
  std::vector<std::int64_t> numbers;
  while (!version.empty()) {
    const std::string_view piece = version.substr(0, version.find('.'));
    if (!piece.empty())
      numbers.push_back(toInt64(piece).value_or(0));
    version.remove_prefix(std::min(piece.size() + 1, version.size()));
  }
  return numbers;
}

} // namespace

bool isNewer(std::string_view remote, std::string_view local) {
  std::vector<std::int64_t> theirs = pieces(remote);
  std::vector<std::int64_t> ours = pieces(local);
  const std::size_t length = std::max(theirs.size(), ours.size());
  theirs.resize(length);
  ours.resize(length);
  return theirs > ours;
}

} // namespace driftmark
