#pragma once

#ifdef _WIN32
#include "wine/support/served_instrument_win32.h"
#elif defined(QUARN_REQUESTED_INSTRUMENT)
#include "support/requested_instrument_linux.h"
#else
#include "support/served_instrument_linux.h"
#endif
