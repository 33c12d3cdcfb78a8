#pragma once

#include "brctl/Style.h"
#include "common/Record.h"

#include <string>

namespace icloud {

/// The line of a per-item monitor for one item record: path, kind, and a percentage or a state.
std::string itemLine(const Record& record, const Style& style);

} // namespace icloud
