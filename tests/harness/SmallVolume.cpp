// How tests get a volume that they can fill.

#include "harness/SmallVolume.h"

#include <sys/mount.h>

namespace driftmark::test {

SmallVolume::SmallVolume(std::size_t size)
    : isMounted_(mount("none", folder_.path().c_str(), "tmpfs", 0,
                       ("size=" + std::to_string(size)).c_str()) == 0) {}

SmallVolume::~SmallVolume() {
  if (isMounted_)
    umount2(folder_.path().c_str(), MNT_DETACH);
}

} // namespace driftmark::test
