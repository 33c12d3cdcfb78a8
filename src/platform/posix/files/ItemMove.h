#pragma once

#include <string>

namespace driftmark {

/// Moves what is at `from` to `to`, where nothing is yet, between volumes too. Each of the two
/// names is at every moment that of a whole item or of nothing: a copy between volumes is made
/// under a hidden name beside `to`, and the original is removed under a hidden name of its own.
/// Returns 0 or an error number; the item is then still at `from`. Any thread.
int moveTree(const std::string& from, const std::string& to);

/// Whether the folders that hold the two are known to be on different volumes. Any thread.
bool areOnTwoVolumes(const std::string& one, const std::string& other);

} // namespace driftmark
