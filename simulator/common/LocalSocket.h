#pragma once

#include "common/Descriptor.h"

#include <filesystem>

namespace icloud {

/// Opens a listening Unix socket called `name` in `folder`, however long the folder's path is. A
/// socket left there by an earlier process is replaced. Throws std::system_error.
Descriptor listenAt(const std::filesystem::path& folder, const char* name);

/// Connects to the socket called `name` in `folder`. Throws std::system_error when nobody listens.
Descriptor connectTo(const std::filesystem::path& folder, const char* name);

} // namespace icloud
