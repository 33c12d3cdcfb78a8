#include "app/Program.h"
#include "platform/macos/MacPlatform.h"
#include "platform/posix/FileDescriptor.h"

int main() {
  driftmark::openMissingStandardDescriptors();
  @autoreleasepool {
    driftmark::MacPlatform platform;
    return driftmark::runProgram(platform.ports());
  }
}
