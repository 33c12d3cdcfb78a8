#pragma once

#include <vector>

#include <QPalette>
#include <QString>

namespace driftmark::gallery {

/// A desktop's palette.
struct Theme {
  QString name;
  QPalette palette;
};

/// A light one, a dark one, and two of high contrast.
std::vector<Theme> themes();

} // namespace driftmark::gallery
