#pragma once

#include <string_view>

namespace driftmark {

/// Whether dotted version `remote` is greater than `local`. The first different piece decides. A
/// piece that is not a number counts as 0, and so does a missing one.
bool isNewer(std::string_view remote, std::string_view local);

} // namespace driftmark
