#pragma once

namespace driftmark {

/// What `function` returns. For callers in Objective-C, through which nothing may be thrown: the
/// program ends instead.
template <class Function> auto noThrow(const Function& function) noexcept {
  return function();
}

} // namespace driftmark
