#pragma once

#ifdef _WIN32
#include "wine/support/process_holdings_win32.h"
#else
#include "support/process_holdings_linux.h"
#endif
