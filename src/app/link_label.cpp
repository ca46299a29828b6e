#include "app/link_label.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QStylePainter>
#include <utility>

#include "ui/accessible.h"
#include "ui/contrast.h"

namespace quarn {
namespace {

constexpr QRgb kLinkColour = qRgb(0x00, 0x00, 0xFF);

/// The interface for assistive tools: a link that can be pressed.
class AccessibleLink final : public QAccessibleWidget {
 public:
  explicit AccessibleLink(LinkLabel* link) : QAccessibleWidget(link, QAccessible::Link) {}

  [[nodiscard]] QString text(QAccessible::Text kind) const override {
    const auto* link = dynamic_cast<const LinkLabel*>(object());
    return kind == QAccessible::Name && link != nullptr ? link->text() : QAccessibleWidget::text(kind);
  }
  [[nodiscard]] QStringList actionNames() const override {
    return QStringList{pressAction()} + QAccessibleWidget::actionNames();
  }
  void doAction(const QString& action) override {
    auto* link = dynamic_cast<LinkLabel*>(object());
    if (action == pressAction() && link != nullptr) {
      link->Activate();
    } else {
      QAccessibleWidget::doAction(action);
    }
  }
};

}  // namespace

LinkLabel::LinkLabel(const QString& text, std::function<void()> activate, QWidget* parent)
    : QLabel(parent), m_activate(std::move(activate)) {
  // This comes first: listeners are notified of the text, and immediately ask for its interface.
  MakeAccessibleAs<LinkLabel, AccessibleLink>();
  setTextFormat(Qt::PlainText);
  setText(text);
  QFont underlined = font();
  underlined.setUnderline(true);
  setFont(underlined);
  ApplyColour();
  setCursor(Qt::PointingHandCursor);
  setFocusPolicy(Qt::TabFocus);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void LinkLabel::ApplyColour() {
  QPalette colours = palette();
  const QColor colour = ReadableOn(colours.color(backgroundRole()), kLinkColour);
  // The change causes another event of this kind.
  if (colours.color(QPalette::WindowText) == colour) return;
  colours.setColor(QPalette::WindowText, colour);
  setPalette(colours);
}

void LinkLabel::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) ApplyColour();
}

void LinkLabel::mousePressEvent(QMouseEvent* event) { m_pressed = event->button() == Qt::LeftButton; }

void LinkLabel::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !std::exchange(m_pressed, false)) return;
  // As with a button, moving off before the release cancels the click.
  if (rect().contains(event->position().toPoint())) m_activate();
}

void LinkLabel::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  if (key != Qt::Key_Space && key != Qt::Key_Return && key != Qt::Key_Enter) {
    QLabel::keyPressEvent(event);
    return;
  }
  if (!event->isAutoRepeat()) m_activate();
}

void LinkLabel::focusInEvent(QFocusEvent* /*event*/) { update(); }

void LinkLabel::focusOutEvent(QFocusEvent* /*event*/) { update(); }

void LinkLabel::paintEvent(QPaintEvent* event) {
  QLabel::paintEvent(event);
  if (!hasFocus()) return;
  QStyleOptionFocusRect option;
  option.initFrom(this);
  option.backgroundColor = palette().color(backgroundRole());
  QStylePainter(this).drawPrimitive(QStyle::PE_FrameFocusRect, option);
}

}  // namespace quarn
