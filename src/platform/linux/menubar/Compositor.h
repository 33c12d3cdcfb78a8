#pragma once

namespace driftmark {

/// Whether windows can have transparent parts: on an X11 display only while a compositor runs. Main
/// thread only.
bool canBlendWindows();

} // namespace driftmark
