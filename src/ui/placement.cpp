#include "ui/placement.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QScreen>
#include <QVariant>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "ui/usual_frame.h"
#include "ui/whole_pixels.h"

namespace quarn {
namespace {

constexpr int kLift = 30;

QSize PrimaryScreenSize() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? screen->geometry().size() : QSize();
}

QPoint PrimaryScreenOrigin() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen != nullptr ? screen->geometry().topLeft() : QPoint();
}

/// What the window manager has answered, if it could.
std::optional<QMargins>& AnnouncedFrame() {
  static std::optional<QMargins> frame;
  return frame;
}

QMargins FirstUsualFrame() {
  if (!AnnouncedFrame()) LearnUsualFrame();
  return AnnouncedFrame().value_or(QMargins{8, 31, 8, 8});
}

/// The last known frame of one of our windows.
QMargins& UsualFrame() {
  static QMargins frame = FirstUsualFrame();
  return frame;
}

constexpr char kFrameless[] = "quarnFrameless";

bool IsBare(const QWidget& window) { return window.windowFlags().testFlag(Qt::FramelessWindowHint); }

std::optional<QMargins> KnownFrame(const QWidget& window) {
  if (IsBare(window)) return QMargins();
  const QWindow* handle = window.windowHandle();
  if (handle == nullptr) return std::nullopt;
  const QMargins reported = handle->frameMargins();
  if (reported.isNull() && !handle->property(kFrameless).toBool()) return std::nullopt;
  return reported;
}

constexpr int kMainDialogGap = 10;

}  // namespace

QPoint CentredPosition(QSize screen, QSize window) {
  return {screen.width() / 2 - window.width() / 2,
          std::max(screen.height() / 2 - window.height() / 2 - kLift, 0)};
}

QPoint PercentPosition(QSize screen, QSize window, int xPercent, int yPercent) {
  constexpr double kWhole = 100.0;
  const QSize left = screen - window;
  return {static_cast<int>(left.width() * double(xPercent) / kWhole),
          static_cast<int>(left.height() * double(yPercent) / kWhole)};
}

void CenterOnScreen(QWidget& window) {
  window.move(PrimaryScreenOrigin() + CentredPosition(PrimaryScreenSize(), OuterSize(window)));
}

void PlaceOnScreenByPercent(QWidget& window, int xPercent, int yPercent) {
  window.move(PrimaryScreenOrigin() +
              PercentPosition(PrimaryScreenSize(), OuterSize(window), xPercent, yPercent));
}

bool IsFrameKnown(const QWidget& window) { return KnownFrame(window).has_value(); }

void LearnUsualFrame() { AnnouncedFrame() = FrameOfNewWindows(); }

QMargins FrameOf(const QWidget& window) {
  if (const std::optional<QMargins> known = KnownFrame(window)) {
    if (!IsBare(window)) UsualFrame() = *known;
    return *known;
  }
  return UsualFrame();
}

void TakeForFrameless(QWidget& window) {
  if (window.windowHandle() != nullptr) window.windowHandle()->setProperty(kFrameless, true);
}

QSize OuterSize(const QWidget& window) { return window.size().grownBy(FrameOf(window)); }

QRect MapDialogUnits(const QFont& font, const QRect& units) {
  constexpr double kAlphabet = 52.0;
  constexpr double kUnitsPerWidth = 4.0;
  constexpr double kUnitsPerHeight = 8.0;
  const QFontMetricsF metrics(font);
  const double baseX =
      metrics.horizontalAdvance(QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz")) /
      kAlphabet;
  const auto x = [baseX](int value) { return static_cast<int>(std::lround(value * baseX / kUnitsPerWidth)); };
  const auto y = [&metrics](int value) {
    return static_cast<int>(std::lround(value * metrics.height() / kUnitsPerHeight));
  };
  return {x(units.x()), y(units.y()), x(units.width()), y(units.height())};
}

QPoint PlaceBelowOrAbove(const QRect& mainDialog, QSize dialog, QSize screen) {
  constexpr int kLiftAbove = 80;
  const int bottom = mainDialog.y() + mainDialog.height();
  int y = bottom + kMainDialogGap;
  if (dialog.height() + y > screen.height()) {
    y = mainDialog.y() - kLiftAbove + (screen.height() - bottom - dialog.height());
  }
  return {mainDialog.x(), y};
}

QPoint PlaceBeside(const QRect& mainDialog, QSize dialog, QSize screen) {
  constexpr int kGapToTheLeft = 30;
  int x = mainDialog.x() + mainDialog.width() + kMainDialogGap;
  if (dialog.width() + x > screen.width()) {
    x = screen.width() - dialog.width() - mainDialog.width() - kGapToTheLeft;
  }
  return {x, mainDialog.y()};
}

QPoint PlaceOffOthers(const QRect& mainDialog, const QList<QRect>& others, QSize dialog, QSize screen) {
  const QSize room = (screen - dialog).expandedTo({0, 0});
  const QList<QRect> shown = QList<QRect>{mainDialog} + others;
  const auto covered = [&](QPoint corner) {
    qint64 sum = 0;
    for (const QRect& each : shown) {
      const QRect both = each & QRect(corner, dialog);
      sum += qint64{both.width()} * both.height();
    }
    return sum;
  };
  QPoint best;
  qint64 least = std::numeric_limits<qint64>::max();
  const auto consider = [&](int x, int y) {
    const QPoint corner(std::clamp(x, 0, room.width()), std::clamp(y, 0, room.height()));
    if (const qint64 sum = covered(corner); sum < least) {
      least = sum;
      best = corner;
    }
  };
  for (const QRect& each : shown) {
    consider(each.x(), each.y() + each.height() + kMainDialogGap);
    consider(each.x() + each.width() + kMainDialogGap, each.y());
    consider(each.x() - dialog.width() - kMainDialogGap, each.y());
  }
  return best;
}

int DialogGrid::Width(int units) const { return MapDialogUnits(m_window.font(), {0, 0, units, 0}).width(); }

int DialogGrid::Height(int units) const { return MapDialogUnits(m_window.font(), {0, 0, 0, units}).height(); }

int DialogGrid::WholeWidth(int units) const {
  return WholePixels(Width(units), m_window.devicePixelRatioF());
}

int DialogGrid::WholeHeight(int units) const {
  return WholePixels(Height(units), m_window.devicePixelRatioF());
}

}  // namespace quarn
