#pragma once

#include "ports/Workspace.h"

#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// A workspace that only records requests as text such as "open /a".
class TestWorkspace final : public Workspace {
public:
  void activateFileViewerSelecting(const std::string& path) override {
    requests_.push_back("reveal " + path);
  }
  void open(const std::string& path) override { requests_.push_back("open " + path); }

  /// Returns all requests so far and clears the list.
  std::vector<std::string> take() { return std::exchange(requests_, {}); }

private:
  std::vector<std::string> requests_;
};

} // namespace driftmark::test
