#pragma once

namespace driftmark {

/// Opens the null device in the place of each standard descriptor that this process was started
/// without, so that nothing opened later gets its number and, with it, what is meant for it. Call
/// it before anything else.
void openMissingStandardDescriptors();

} // namespace driftmark
