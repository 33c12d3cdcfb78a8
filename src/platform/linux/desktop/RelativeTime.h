#pragma once

#include "ports/Clock.h"

#include <string>

namespace driftmark {

/// `date` as seen from `now`, in the largest unit that fits, cut to a whole number: "2 minutes
/// ago", "in 1 week". Less than a second either way is "in 0 seconds". Days, weeks, months and
/// years are those of the local calendar. Any thread.
std::string relativeTime(Date date, Date now);

} // namespace driftmark
