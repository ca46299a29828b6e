#pragma once

#include "app/program.h"

namespace quarn {

class CQuarnDlg;

/// From the program's objects to a polling main dialog: ports, settings, connection, windows, in this
/// order. Messages appear on the way and each is over before the next step.
void StartUp(Program& program, CQuarnDlg& dialog);

}  // namespace quarn
