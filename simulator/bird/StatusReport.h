#pragma once

#include "bird/Cloud.h"

#include <string>

namespace icloud {

/// The records that answer a request for the daemon's status: the folders that have jobs, and
/// their jobs.
std::string statusReport(const Cloud& cloud);

} // namespace icloud
