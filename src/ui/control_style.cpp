#include "ui/control_style.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

#include "ui/contrast.h"

namespace quarn {
namespace {

/// Fusion draws borders this much darker than the window, in per cent.
constexpr int kBorderDarker = 140;
/// The same for the default button and what has the focus; darker than the palette's highlight.
constexpr int kHighlightDarker = 125;

/// The palette with which Fusion draws readable borders on this one's window.
QPalette WithVisibleBorders(const QPalette& palette) {
  const QColor window = palette.color(QPalette::Window);
  QPalette visible = palette;
  visible.setColor(QPalette::Window, ReadableOn(window, window).lighter(kBorderDarker));
  const QColor highlight = palette.color(QPalette::Highlight);
  visible.setColor(QPalette::Highlight, ReadableOn(window, highlight).lighter(kHighlightDarker));
  return visible;
}

bool HasBorder(QStyle::PrimitiveElement element) {
  switch (element) {
    case QStyle::PE_IndicatorCheckBox:
    case QStyle::PE_IndicatorRadioButton:
    case QStyle::PE_FrameLineEdit:
    case QStyle::PE_PanelMenu:
    case QStyle::PE_PanelButtonCommand:
      return true;
    default:
      return false;
  }
}

class VisibleOutlines final : public QProxyStyle {
 public:
  using QProxyStyle::QProxyStyle;

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    if (element == PE_FrameFocusRect) {
      DrawFocus(*option, *painter);
      return;
    }
    const auto draw = [&](const QStyleOption* with) {
      QProxyStyle::drawPrimitive(element, with, painter, widget);
    };
    if (HasBorder(element) && IsDark(option->palette.color(QPalette::Window))) {
      DrawBordered(option, draw);
    } else {
      draw(option);
    }
  }

  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element == CE_MenuItem && item != nullptr && item->menuItemType == QStyleOptionMenuItem::Separator &&
        IsDark(option->palette.color(QPalette::Window))) {
      DrawSeparator(*option, *painter);
      return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
    if (element == CE_PushButton) DrawFocusInside(*option, *painter, 3);
  }

  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override {
    const auto draw = [&](const QStyleOptionComplex* with) {
      QProxyStyle::drawComplexControl(control, with, painter, widget);
    };
    const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control != CC_ComboBox || box == nullptr) {
      draw(option);
      return;
    }
    if (IsDark(option->palette.color(QPalette::Window))) {
      DrawVisible(*box, draw);
    } else {
      draw(option);
    }
    // The text begins four pixels from the edge.
    DrawFocusInside(*option, *painter, 2);
  }

 private:
  static QColor MarkOf(const QStyleOption& option) {
    return ReadableOn(option.palette.color(QPalette::Window), option.palette.color(QPalette::Highlight));
  }

  template <typename Draw>
  static void DrawBordered(const QStyleOption* option, const Draw& draw) {
    if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
      DrawVisible(*button, draw);
    } else if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option)) {
      DrawVisible(*frame, draw);
    } else if (const auto* menu = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
      DrawVisible(*menu, draw);
    } else {
      draw(option);
    }
  }

  template <typename Option, typename Draw>
  static void DrawVisible(Option option, const Draw& draw) {
    option.palette = WithVisibleBorders(option.palette);
    draw(&option);
  }

  /// Fusion draws a shadow, which cannot be seen on a dark menu.
  static void DrawSeparator(const QStyleOption& option, QPainter& painter) {
    constexpr int kFromEdge = 5;
    const QRect& room = option.rect;
    const QRect line(room.left() + kFromEdge, room.center().y(), room.width() - 2 * kFromEdge, 1);
    painter.fillRect(line, WithVisibleBorders(option.palette).color(QPalette::Window).darker(kBorderDarker));
  }

  /// Always, not only once the keyboard has been used.
  static void DrawFocus(const QStyleOption& option, QPainter& painter) {
    painter.save();
    painter.setPen(MarkOf(option));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
    painter.restore();
  }

  /// Fusion only changes the colour of the border.
  static void DrawFocusInside(const QStyleOption& option, QPainter& painter, int fromEdge) {
    if (!option.state.testFlag(State_HasFocus)) return;
    QStyleOption inside = option;
    inside.rect.adjust(fromEdge, fromEdge, -fromEdge, -fromEdge);
    DrawFocus(inside, painter);
  }
};

}  // namespace

void UseVisibleOutlines() {
  const QString name = QApplication::style()->name();
  if (name == QLatin1String("fusion")) QApplication::setStyle(new VisibleOutlines(name));
}

}  // namespace quarn
