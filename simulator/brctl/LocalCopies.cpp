#include "brctl/LocalCopies.h"

#include "brctl/BirdLink.h"

#include <cstdio>

namespace icloud {

bool changeLocalCopies(const SystemRoot& root, std::string_view request,
                       const std::vector<std::string>& paths) {
  bool isDone = true;
  for (const std::string& path : paths) {
    try {
      const std::string absolute = std::filesystem::current_path() / path;
      BirdLink(root, {request, absolute}).await();
    } catch (const std::exception& problem) {
      std::fprintf(stderr, "brctl: %s: %s\n", path.c_str(), problem.what());
      isDone = false;
    }
  }
  return isDone;
}

} // namespace icloud
