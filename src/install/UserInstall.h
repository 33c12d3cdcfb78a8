#pragma once

#include "ports/Platform.h"

/// The one-time offer to move the application into an Applications folder.
namespace driftmark::UserInstall {

/// Shows the offer unless the application is already in an Applications folder, is no bundle, or
/// the user has declined, and moves the application there when the user agrees. True when the new
/// copy is about to be opened and this process about to end: the caller then starts nothing. Main
/// thread only; blocks it while the bundle is copied.
bool offerIfNeeded(const Platform& platform);

} // namespace driftmark::UserInstall
