#pragma once

#include <QDir>

namespace driftmark::gallery {

/// Saves overview-menus.png, overview-alerts.png and overview-states.png, made of the gallery's
/// pictures in that folder. Returns whether it could.
bool saveOverviews(const QDir& folder);

} // namespace driftmark::gallery
