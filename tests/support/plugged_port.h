#pragma once

#ifdef _WIN32
#include "wine/support/plugged_port_win32.h"
#else
#include "support/plugged_port_linux.h"
#endif
