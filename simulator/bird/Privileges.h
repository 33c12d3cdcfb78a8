#pragma once

namespace icloud {

/// Gives up what lets root into files whose permissions say otherwise, so that they hold for this
/// process whoever runs it. Throws std::system_error.
void heedPermissions();

} // namespace icloud
