#pragma once

#include <memory>
#include <utility>

namespace driftmark {

/// Wraps `action`, which takes its owner by reference first, into a callback that holds the owner
/// weakly: once the owner is gone the callback does nothing. The one mechanism for callbacks that
/// may outlive their owner.
template <class Owner, class Action>
auto weakly(const std::shared_ptr<Owner>& owner, Action action) {
  return [weak = std::weak_ptr<Owner>(owner), action = std::move(action)](auto&&... arguments) {
    if (const std::shared_ptr<Owner> self = weak.lock())
      action(*self, std::forward<decltype(arguments)>(arguments)...);
  };
}

} // namespace driftmark
