#pragma once

#include "bird/Drive.h"
#include "bird/GlobalTransfers.h"
#include "bird/StatusJobs.h"

#include <cstdint>

namespace icloud {

/// Everything that the daemon knows and its clients ask for.
struct Cloud {
  Drive drive;
  GlobalTransfers globalTransfers;
  StatusJobs jobs;
  std::int64_t quota = 0;
};

} // namespace icloud
