#pragma once

#include "common/Descriptor.h"

#include <initializer_list>

namespace icloud {

/// Keeps these signals from ending this process. Becomes readable when one has come. Throws
/// std::system_error.
Descriptor signalDescriptor(std::initializer_list<int> numbers);

} // namespace icloud
