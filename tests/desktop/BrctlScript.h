#pragma once

#include <string>

namespace driftmark::desktop {

/// A `brctl` that reports one upload and nothing else. Its texts are those of a shell script.
inline std::string brctlUploading(const std::string& path, const std::string& percent,
                                  const std::string& afterwards = "exec " CHILD_TOOL " wait") {
  return "case \"$*\" in\n"
         "*CloudDocs) " CHILD_TOOL " print ' o /com~apple~CloudDocs/" +
         path + " \u2191 " + percent + "%\n'; " + afterwards +
         ";;\n"
         "*) exec " CHILD_TOOL " wait;;\n"
         "esac";
}

} // namespace driftmark::desktop
