#include "ui/dropped_file.h"

#include <QDropEvent>

namespace quarn {

bool AcceptAsCopy(QDropEvent& event) {
  if (!event.possibleActions().testFlag(Qt::CopyAction)) {
    event.ignore();
    return false;
  }
  event.setDropAction(Qt::CopyAction);
  event.accept();
  return true;
}

}  // namespace quarn
