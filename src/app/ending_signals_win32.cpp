#include "app/ending_signals.h"

namespace quarn {

// The system asks the windows.
class EndingSignals::Watch {};

EndingSignals::EndingSignals(std::function<void()> /*close*/) {}
EndingSignals::~EndingSignals() = default;

}  // namespace quarn
