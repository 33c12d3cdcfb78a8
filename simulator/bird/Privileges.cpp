#include "bird/Privileges.h"

#include "common/SystemFailure.h"

#include <array>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace icloud {

void heedPermissions() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  if (syscall(SYS_capget, &header, sets.data()) != 0)
    throwSystemFailure("cannot tell the rights of this process");
  sets[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
  if (syscall(SYS_capset, &header, sets.data()) != 0)
    throwSystemFailure("cannot give up rights of this process");
}

} // namespace icloud
