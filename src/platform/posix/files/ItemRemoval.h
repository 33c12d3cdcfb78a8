#pragma once

#include <string>

namespace driftmark {

/// Removes what is at `path`, a folder with all that it holds, however deep, and never through
/// links. A folder that its owner may not change is made so that he may. Nothing is touched where
/// the folder above may not be changed. Returns 0 or an error number. Any thread.
int removeTree(const std::string& path);

} // namespace driftmark
