#pragma once

#include "brctl/Style.h"
#include "common/Record.h"

#include <string>

namespace icloud {

/// The line of a status report for one of the records that the daemon answers with.
std::string statusLine(const Record& record, const Style& style);

} // namespace icloud
