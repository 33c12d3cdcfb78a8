#pragma once

#include "common/Descriptor.h"

#include <filesystem>

namespace icloud {

/// Opens a listening Unix socket called `name` in `folder`, for a folder path of any length.
/// Replaces a socket that an earlier process left there. Throws std::system_error.
Descriptor listenAt(const std::filesystem::path& folder, const char* name);

/// Connects to the socket called `name` in `folder`. Throws std::system_error when no process
/// listens.
Descriptor connectTo(const std::filesystem::path& folder, const char* name);

} // namespace icloud
