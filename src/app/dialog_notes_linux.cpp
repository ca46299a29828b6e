#include "app/dialog_notes.h"

namespace quarn {

struct DialogNotesUndone::Notes {};

DialogNotesUndone::DialogNotesUndone() = default;
DialogNotesUndone::~DialogNotesUndone() = default;
void DialogNotesUndone::KeepOthers() {}

}  // namespace quarn
