#pragma once

#include "bird/Drive.h"

#include <optional>
#include <string>

namespace icloud {

/// The file or folder of the drive that a client means by an absolute path. Links above its last
/// component are followed. None for what lies in the drive and iCloud does not know. Throws Refusal
/// when there is no such file or it lies elsewhere, std::system_error when that cannot be told.
std::optional<ItemId> lookUp(const Drive& drive, const std::string& path);

} // namespace icloud
