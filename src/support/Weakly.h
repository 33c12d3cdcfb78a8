#pragma once

#include <memory>
#include <utility>

namespace driftmark {

/// Makes a callback that calls `action(owner, arguments...)` and holds the owner weakly: it does
/// nothing when the owner no longer exists. Every callback that may outlive its owner is made here.
template <class Owner, class Action>
auto weakly(const std::shared_ptr<Owner>& owner, Action action) {
  return [weak = std::weak_ptr<Owner>(owner), action = std::move(action)](auto&&... arguments) {
    if (const std::shared_ptr<Owner> self = weak.lock())
      action(*self, std::forward<decltype(arguments)>(arguments)...);
  };
}

} // namespace driftmark
