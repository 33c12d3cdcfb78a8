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

inline MenuItem heading(std::string title) {
  MenuItem item = label(std::move(title));
  item.kind = MenuItem::Kind::heading;
  return item;
}

inline MenuItem command(
    std::string title, std::function<void()> action = [] {}) {
  MenuItem item;
  item.title = std::move(title);
  item.action = std::move(action);
  return item;
}

/// A row as the program makes it for a file.
inline MenuItem file(const std::string& name, const std::string& symbol,
                     const std::string& detail) {
  MenuItem item = command(name + "  —  " + detail);
  item.nameLength = name.size();
  item.symbol = {symbol, detail};
  item.toolTip = "/Users/ada/" + name;
  return item;
}

} // namespace driftmark::test
