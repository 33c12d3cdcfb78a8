#pragma once

#include <string>

namespace driftmark {

/// Copies a file, a link, or a folder with all that it holds to `to`, where nothing is yet, with
/// modes, times and extended attributes, and with owners where the user may give things away. What
/// was copied has reached the disk. A failed copy leaves what was copied so far. Returns 0 or an
/// error number; devices, sockets and pipes are not supported. Any thread.
int copyTree(const std::string& from, const std::string& to);

} // namespace driftmark
