#pragma once

#include "harness/BuiltFiles.h"

#include <string>

namespace driftmark::test {

/// The shell script of a `brctl` that reports one upload and nothing else. `path` and `percent` are
/// texts of that script.
inline std::string brctlUploading(const std::string& path, const std::string& percent,
                                  const std::string& afterwards = execChildTool("wait")) {
  return "case \"$*\" in\n"
         "*CloudDocs) " +
         childToolPath() + " print ' o /com~apple~CloudDocs/" + path + " \u2191 " + percent +
         "%\n'; " + afterwards +
         ";;\n"
         "*) exec " +
         childToolPath() +
         " wait;;\n"
         "esac";
}

} // namespace driftmark::test
