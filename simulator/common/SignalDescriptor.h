#pragma once

#include "common/Descriptor.h"

#include <initializer_list>

namespace icloud {

/// Blocks these signals. The descriptor becomes readable when one arrives. Throws
/// std::system_error.
Descriptor signalDescriptor(std::initializer_list<int> numbers);

} // namespace icloud
