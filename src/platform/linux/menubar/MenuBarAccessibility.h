#pragma once

namespace driftmark {

/// Makes Qt describe menu bar strips as menu buttons, and the rows of their menus by their whole
/// titles, to screen readers. May be called repeatedly. Main thread only.
void installMenuBarAccessibility();

} // namespace driftmark
