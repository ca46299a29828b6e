#pragma once

#include <QAccessible>

namespace quarn {

/// Makes this interface, created from a pointer to the widget, the one that assistive tools use for every
/// widget of this class. Repeated calls are cheap. User-interface thread only.
template <typename Widget, typename Interface>
void MakeAccessibleAs() {
  [[maybe_unused]] static const bool done = [] {
    QAccessible::installFactory([](const QString& /*className*/, QObject* object) -> QAccessibleInterface* {
      auto* widget = dynamic_cast<Widget*>(object);
      return widget != nullptr ? new Interface(widget) : nullptr;
    });
    return true;
  }();
}

}  // namespace quarn
