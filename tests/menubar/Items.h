#pragma once

#include "ports/Menu.h"

#include <functional>
#include <string>
#include <utility>

namespace driftmark::test {

inline MenuItem separator() {
  MenuItem item;
  item.kind = MenuItem::Kind::separator;
  return item;
}

inline MenuItem label(std::string title, MenuItem::Tag tag = 0) {
  MenuItem item;
  item.kind = MenuItem::Kind::label;
  item.title = std::move(title);
  item.tag = tag;
  return item;
}

inline MenuItem command(
    std::string title, std::function<void()> action = [] {}) {
  MenuItem item;
  item.title = std::move(title);
  item.action = std::move(action);
  return item;
}

} // namespace driftmark::test
