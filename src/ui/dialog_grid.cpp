#include "ui/dialog_grid.h"

#include <QWidget>

#include "ui/placement.h"

namespace quarn {

int DialogGrid::Width(int units) const { return MapDialogUnits(m_window.font(), {0, 0, units, 0}).width(); }

int DialogGrid::Height(int units) const { return MapDialogUnits(m_window.font(), {0, 0, 0, units}).height(); }

}  // namespace quarn
