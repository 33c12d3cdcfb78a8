#include "platform/posix/children/StandardDescriptors.h"

#include "platform/posix/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace driftmark {

void openMissingStandardDescriptors() {
  // The system hands out the lowest number that is free.
  FileDescriptor opened(open("/dev/null", O_RDWR));
  while (opened.isOpen() && opened.number() <= STDERR_FILENO) {
    opened.release();
    opened = FileDescriptor(open("/dev/null", O_RDWR));
  }
}

} // namespace driftmark
