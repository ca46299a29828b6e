#pragma once

#include <QAccessible>

namespace quarn {

/// From now on assistive tools see every widget of this class through this interface, which is made from a
/// pointer to it. Calling it again costs nothing. User-interface thread only.
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
