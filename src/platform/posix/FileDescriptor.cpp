// What stands in for a standard descriptor that this process was started without.

#include "platform/posix/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace driftmark {

void openMissingStandardDescriptors() {
  // The system always assigns the lowest free number.
  FileDescriptor opened(open("/dev/null", O_RDWR));
  while (opened.isOpen() && opened.number() <= STDERR_FILENO) {
    opened.release();
    opened = FileDescriptor(open("/dev/null", O_RDWR));
  }
}

} // namespace driftmark
