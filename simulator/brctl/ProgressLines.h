#pragma once

#include "brctl/Style.h"
#include "common/Record.h"

#include <string>
#include <vector>

namespace icloud {

/// The lines of a global monitor for one progress record: the full description of the transfer's
/// progress object.
std::vector<std::string> progressLines(const Record& record, const Style& style);

} // namespace icloud
