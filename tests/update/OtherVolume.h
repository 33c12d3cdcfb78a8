#pragma once

#include "e2e/TemporaryFolder.h"

#include <filesystem>
#include <memory>

namespace driftmark::road {

/// A temporary folder on another volume than that of `path`; null where there is none.
std::unique_ptr<icloud::test::TemporaryFolder>
folderOnAnotherVolume(const std::filesystem::path& path);

} // namespace driftmark::road
