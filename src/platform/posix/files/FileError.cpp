#include "platform/posix/files/FileError.h"

#include "platform/posix/files/FilePath.h"

#include <system_error>

namespace driftmark {

PlatformError fileError(const std::string& path, std::string_view done, int code) {
  return {std::string("“")
              .append(file_path::name(path))
              .append("” couldn’t be ")
              .append(done)
              .append(": ")
              .append(std::generic_category().message(code))};
}

} // namespace driftmark
