#pragma once

// What no source of the core may include; read by the test of the check, compiled by nothing.
#include "platform/Clock.h"
#include "platform/posix/PosixChildProcesses.h"

#include <string>

#include <QString>

#include <unistd.h>
