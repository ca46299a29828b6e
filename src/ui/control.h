#pragma once

class QWidget;

namespace quarn {

/// Every control carries its number as the dynamic property "controlId".
inline constexpr char kControlIdProperty[] = "controlId";

template <typename Widget>
Widget* WithControlId(Widget* widget, int controlId) {
  widget->setProperty(kControlIdProperty, controlId);
  return widget;
}

}  // namespace quarn
