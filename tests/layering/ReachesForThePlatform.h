#pragma once

// What no source of the core may include. Read by the test of the check, compiled by nothing.
#include "platform/posix/children/PosixChildProcesses.h"
#include "ports/Clock.h"

#include <string>

#include <QString>

#include <unistd.h>
