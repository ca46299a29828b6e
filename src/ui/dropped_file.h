#pragma once

class QDropEvent;

namespace quarn {

/// Takes what is dragged as a copy, whatever is proposed: with Shift held, or by a program that offers
/// nothing else, that can be a move, and a program that is told of a move deletes its file. False, and
/// nothing is taken, if no copy is offered.
bool AcceptAsCopy(QDropEvent& event);

}  // namespace quarn
