#pragma once

#ifdef _WIN32
#include "wine/support/served_instrument_win32.h"
#else
#include "support/served_instrument_linux.h"
#endif
