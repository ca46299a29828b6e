#include "ui/input_hold.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QWheelEvent>
#include <algorithm>
#include <set>
#include <utility>

#include "ui/escape_key.h"

namespace quarn {
namespace {

using Clock = std::chrono::steady_clock;

enum class Treatment { Pass, Keep, Drop };

const QEvent::Type kHandOn = static_cast<QEvent::Type>(QEvent::registerEventType());
/// Only wakes the event loop.
const QEvent::Type kLookAgain = static_cast<QEvent::Type>(QEvent::registerEventType());

/// Key and pointer events reach the program at its QWindows, which pass them on to widgets: they are caught
/// at the window, once. Input-method commits go to the widget with the focus.
Treatment TreatmentOf(const QObject& receiver, QEvent::Type type) {
  switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::ContextMenu:
    case QEvent::Close:
      return receiver.isWindowType() ? Treatment::Keep : Treatment::Pass;
    case QEvent::InputMethod:
    case QEvent::Quit:
    case QEvent::Shortcut:
      return Treatment::Keep;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
      return Treatment::Drop;  // their data is gone by the time they could be delivered
    // A window times its repaints with a timer of its own.
    case QEvent::Timer:
      return receiver.isWindowType() ? Treatment::Pass : Treatment::Drop;
    default:
      return Treatment::Pass;
  }
}

int& HoldsNow() {
  static int count = 0;
  return count;
}

const QKeyEvent* AsKey(const QEvent& event) {
  const bool key = event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease;
  return key ? static_cast<const QKeyEvent*>(&event) : nullptr;
}

int CodeOf(const QEvent& event) {
  switch (event.type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
      return static_cast<const QKeyEvent&>(event).key();
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
      return static_cast<int>(static_cast<const QMouseEvent&>(event).button());
    default:
      return 0;
  }
}

/// The kind of event that starts what an event of this kind ends; None if it ends nothing.
QEvent::Type BeginningOf(int type) {
  switch (type) {
    case QEvent::KeyRelease:
      return QEvent::KeyPress;
    case QEvent::MouseButtonRelease:
      return QEvent::MouseButtonPress;
    case QEvent::TouchEnd:
      return QEvent::TouchBegin;
    default:
      return QEvent::None;
  }
}

/// The device of a kept event. It may be unplugged meanwhile, and an event needs one.
class KeptDevice {
 public:
  explicit KeptDevice(const QPointerEvent& event) : m_device(event.pointingDevice()) {}
  [[nodiscard]] const QPointingDevice* Get() const {
    return m_device.isNull() ? QPointingDevice::primaryPointingDevice() : m_device.data();
  }

 private:
  QPointer<const QPointingDevice> m_device;
};

std::function<std::unique_ptr<QEvent>()> MouseMaker(const QMouseEvent& event) {
  return [type = event.type(), position = event.position(), scene = event.scenePosition(),
          global = event.globalPosition(), button = event.button(), buttons = event.buttons(),
          modifiers = event.modifiers(), device = KeptDevice(event)]() -> std::unique_ptr<QEvent> {
    return std::make_unique<QMouseEvent>(type, position, scene, global, button, buttons, modifiers,
                                         device.Get());
  };
}

std::function<std::unique_ptr<QEvent>()> WheelMaker(const QWheelEvent& event) {
  return [position = event.position(), global = event.globalPosition(), pixels = event.pixelDelta(),
          angle = event.angleDelta(), buttons = event.buttons(), modifiers = event.modifiers(),
          phase = event.phase(), inverted = event.inverted(), source = event.source(),
          device = KeptDevice(event)]() -> std::unique_ptr<QEvent> {
    return std::make_unique<QWheelEvent>(position, global, pixels, angle, buttons, modifiers, phase, inverted,
                                         source, device.Get());
  };
}

std::function<std::unique_ptr<QEvent>()> MakerOf(const QEvent& event) {
  switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
      return MouseMaker(static_cast<const QMouseEvent&>(event));
    case QEvent::Wheel:
      return WheelMaker(static_cast<const QWheelEvent&>(event));
    default:
      break;
  }
  const std::shared_ptr<QEvent> kept(event.clone());
  if (!event.isPointerEvent()) return [kept] { return std::unique_ptr<QEvent>(kept->clone()); };
  // Of a touch screen: without it they mean nothing.
  return [kept, device = QPointer<const QPointingDevice>(
                    static_cast<const QPointerEvent&>(event).pointingDevice())] {
    return std::unique_ptr<QEvent>(device.isNull() ? nullptr : kept->clone());
  };
}

}  // namespace

InputHold::InputHold(QObject* parent) : QObject(parent) { EscapeKey::OfProgram(); }

InputHold::~InputHold() {
  if (m_holding) --HoldsNow();
}

bool InputHold::IsAnyHolding() { return HoldsNow() > 0; }

void InputHold::Begin() {
  if (!std::exchange(m_holding, true)) ++HoldsNow();
  // Typed ahead, and not processed yet when the key before it started this hold.
  m_escapePressed = std::any_of(m_held.begin(), m_held.end(), [](const Held& held) {
    return held.type == QEvent::KeyPress && held.code == Qt::Key_Escape;
  });
  m_escapeUsed = false;
  QCoreApplication::instance()->installEventFilter(this);
  EscapeKey::OfProgram().StayInFront();
}

void InputHold::End() {
  if (std::exchange(m_holding, false)) --HoldsNow();
  if (m_escapeUsed) DropTypeAhead();
  if (m_held.empty()) {
    QCoreApplication::instance()->removeEventFilter(this);
  } else {
    QCoreApplication::postEvent(this, new QEvent(kHandOn));
  }
}

bool InputHold::EscapePressed() const { return m_escapePressed || EscapeKey::OfProgram().IsDown(); }

void InputHold::Pump() { QCoreApplication::processEvents(QEventLoop::AllEvents); }

bool InputHold::WaitUntil(const std::function<bool()>& isOver, Clock::time_point until) {
  QBasicTimer end;
  for (Pump(); !isOver();
       QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents)) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
    if (left.count() <= 0) return false;
    // Its event is dropped like those of other timers, but it wakes the loop.
    end.start(static_cast<int>(left.count()), Qt::PreciseTimer, this);
  }
  return true;
}

void InputHold::LookAgain() { QCoreApplication::postEvent(this, new QEvent(kLookAgain)); }

void InputHold::HoldFor(int ms) {
  Begin();
  WaitUntil([] { return false; }, Clock::now() + std::chrono::milliseconds(ms));
  End();
}

bool InputHold::event(QEvent* event) {
  if (event->type() == kLookAgain) return true;
  if (event->type() != kHandOn) return QObject::event(event);
  HandOn();
  return true;
}

void InputHold::HandOn() {
  // A delivered key may start the next hold; the remaining events then wait for its end, before newer ones.
  // It may also open a box, whose event loop calls this function again.
  if (m_holding || m_handingOn) return;
  m_handingOn = true;
  while (!m_held.empty() && !m_holding) {
    const Held held = std::move(m_held.front());
    m_held.pop_front();
    if (held.receiver.isNull()) continue;
    // Its effect may delete the window to which this hold belongs.
    const QPointer<InputHold> self(this);
    if (const std::unique_ptr<QEvent> event = held.make())
      QCoreApplication::sendEvent(held.receiver, event.get());
    if (self.isNull()) return;
  }
  m_handingOn = false;
  if (m_held.empty() && !m_holding) QCoreApplication::instance()->removeEventFilter(this);
}

bool InputHold::eventFilter(QObject* receiver, QEvent* event) {
  const Treatment treatment = TreatmentOf(*receiver, event->type());
  // Between End and the delivery, newer input queues up behind the older; timers run again.
  const bool queueing = !m_holding && !m_handingOn && !m_held.empty();
  if (!m_holding && !(queueing && treatment == Treatment::Keep)) return false;
  if (treatment == Treatment::Pass) return false;
  if (treatment == Treatment::Keep) Keep(receiver, *event);
  event->ignore();
  return true;
}

void InputHold::Keep(QObject* receiver, const QEvent& event) {
  const QKeyEvent* key = AsKey(event);
  if (key != nullptr && key->isAutoRepeat()) return;
  if (event.type() == QEvent::KeyPress && key->key() == Qt::Key_Escape) m_escapePressed = true;
  // Pointer moves do not matter, only the position of each click; keeping every move could fill memory during
  // a long wait.
  if (event.type() == QEvent::MouseMove && !m_held.empty() && m_held.back().type == QEvent::MouseMove) {
    m_held.pop_back();
  }
  m_held.push_back({receiver, event.type(), CodeOf(event), MakerOf(event)});
}

void InputHold::DropTypeAhead() {
  std::set<std::pair<int, int>> begun;
  std::erase_if(m_held, [&begun](const Held& held) {
    const bool press = held.type == QEvent::MouseButtonDblClick;
    begun.insert({press ? int{QEvent::MouseButtonPress} : held.type, held.code});
    if (held.type == QEvent::Close || held.type == QEvent::Quit) return false;
    // Keys and buttons pressed before the hold must not stay down.
    const QEvent::Type beginning = BeginningOf(held.type);
    return beginning == QEvent::None || begun.contains({beginning, held.code});
  });
}

}  // namespace quarn
