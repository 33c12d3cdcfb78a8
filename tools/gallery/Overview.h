#pragma once

#include <QDir>

namespace driftmark::gallery {

/// Saves overview-menus.png, overview-alerts.png and overview-states.png, made of the gallery's
/// pictures in that folder. Throws std::runtime_error where it cannot.
void saveOverviews(const QDir& folder);

} // namespace driftmark::gallery
