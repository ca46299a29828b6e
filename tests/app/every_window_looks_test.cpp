// Whether every window can be read: no text is cut off at any scaling, and each has enough contrast on a
// bright and on a dark desktop.

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QTransform>
#include <cmath>

#include "app/every_window.h"
#include "app/platform.h"
#include "app/scaling.h"
#include "support/dialog_controls.h"
#include "ui/placement.h"
#include "ui/static_text.h"

namespace quarn::test {
namespace {

/// The least contrast at which text counts as readable.
constexpr double kReadable = 4.5;
/// The same for what is no text, but must be seen.
constexpr double kVisible = 3;

/// A text of a control, and the space that the control has for it, in the window's coordinates.
struct ShownText {
  std::string control;
  QString text;
  QFont font;
  QRect room;
  bool enabled;
  bool wraps;
  bool inButton;
};

QRect ButtonRoom(const QAbstractButton& button) {
  QStyleOptionButton option;
  option.initFrom(&button);
  auto part = QStyle::SE_PushButtonContents;
  if (qobject_cast<const QRadioButton*>(&button) != nullptr) part = QStyle::SE_RadioButtonContents;
  if (qobject_cast<const QCheckBox*>(&button) != nullptr) part = QStyle::SE_CheckBoxContents;
  return button.style()->subElementRect(part, &option, &button);
}

QRect ComboRoom(const QComboBox& box) {
  QStyleOptionComboBox option;
  option.initFrom(&box);
  return box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box);
}

QString LineOf(QString text) {
  if (text.endsWith(u'\r')) text.chop(1);
  return text;
}

QList<std::pair<QString, QRect>> TextsOf(const QWidget& widget) {
  if (const auto* label = qobject_cast<const QLabel*>(&widget))
    return {{label->text(), label->contentsRect()}};
  if (const auto* line = dynamic_cast<const StaticText*>(&widget))
    return {{LineOf(line->Text()), line->rect()}};
  if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
    return {{button->text(), ButtonRoom(*button)}};
  }
  QList<std::pair<QString, QRect>> texts;
  if (const auto* box = qobject_cast<const QComboBox*>(&widget)) {
    texts.append({box->currentText(), ComboRoom(*box)});
  } else if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) {
    texts.append({field->text().left(1), field->contentsRect()});
  } else if (const auto* menu = qobject_cast<const QMenuBar*>(&widget)) {
    for (QAction* each : menu->actions())
      texts.append({each->text().remove(u'&'), menu->actionGeometry(each)});
  } else if (const auto* popup = qobject_cast<const QMenu*>(&widget)) {
    for (QAction* each : popup->actions()) {
      if (each->isEnabled()) texts.append({each->text().remove(u'&'), popup->actionGeometry(each)});
    }
  }
  return texts;
}

bool Wraps(const QWidget& widget) {
  const auto* label = qobject_cast<const QLabel*>(&widget);
  return label != nullptr && label->wordWrap();
}

/// All texts in the window.
QList<ShownText> TextsIn(QWidget& window) {
  QList<ShownText> shown;
  QList<QWidget*> widgets = window.findChildren<QWidget*>();
  widgets.prepend(&window);
  for (const QWidget* each : widgets) {
    if (!each->isVisible() || each->window() != &window || each->visibleRegion().isEmpty()) continue;
    for (const auto& [text, room] : TextsOf(*each)) {
      if (text.trimmed().isEmpty()) continue;
      shown.append({each->objectName().toStdString() + " \"" + text.left(30).toStdString() + '"', text,
                    each->font(), room.translated(each->mapTo(&window, QPoint(0, 0))), each->isEnabled(),
                    Wraps(*each), qobject_cast<const QPushButton*>(each) != nullptr});
    }
  }
  return shown;
}

QSize SizeOf(const ShownText& shown) { return QFontMetrics(shown.font).size(Qt::TextExpandTabs, shown.text); }

bool IsScrolled(const QWidget& window) {
  return window.findChild<QWidget*>(QStringLiteral("scrolledText")) != nullptr;
}

class EveryWindowsLooks : public EveryWindow {};

TEST_P(EveryWindowsLooks, CutNoTextOff) {
  if (const int asked = qEnvironmentVariableIntValue("QT_FONT_DPI"); asked != 0) {
    ASSERT_EQ(WindowDpi(dialog), asked) << "the scaling has not come through";
  }
  program.state.displayScalePercent = ScalingPercent(WindowDpi(dialog));
  ASSERT_TRUE(IsSupportedScaling(program.state.displayScalePercent)) << WindowDpi(dialog);
  Visit([&](QWidget& shown) {
    if (IsScrolled(shown)) return;  // it wraps
    for (const ShownText& each : TextsIn(shown)) {
      const QSize needed = SizeOf(each);
      EXPECT_LE(needed.width(), each.room.width()) << each.control;
      EXPECT_LE(needed.height(), each.room.height()) << each.control;
      EXPECT_GE(each.room.left(), 0) << each.control;
      EXPECT_LE(each.room.left() + needed.width(), shown.width()) << each.control;
      EXPECT_GE(each.room.top(), 0) << each.control;
      EXPECT_LE(each.room.top() + needed.height(), shown.height()) << each.control;
    }
    EXPECT_FALSE(dialog.MenuBarWraps());
    // The Terminal Screen has its width in pixels, however large the title's letters are.
    const bool widthFollowsFont = shown.objectName() != QLatin1String("CTerminalScreen");
    if (widthFollowsFont && qobject_cast<QDialog*>(&shown) != nullptr && !shown.windowTitle().isEmpty()) {
      EXPECT_TRUE(TitleFits(shown, shown.windowTitle()));
    }
  });
}

/// Relative luminance of a colour of sRGB.
double Brightness(QRgb colour) {
  const auto light = [](int channel) {
    const double part = channel / 255.0;
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * light(qRed(colour)) + 0.7152 * light(qGreen(colour)) + 0.0722 * light(qBlue(colour));
}

double Contrast(QRgb one, QRgb other) {
  const double a = Brightness(one) + 0.05;
  const double b = Brightness(other) + 0.05;
  return a > b ? a / b : b / a;
}

/// The highest contrast in this part of the picture to its most frequent colour.
double ContrastIn(const QImage& picture, QRect part) {
  QHash<QRgb, int> counts;
  part &= picture.rect();
  for (int y = part.top(); y <= part.bottom(); ++y) {
    for (int x = part.left(); x <= part.right(); ++x) ++counts[picture.pixel(x, y)];
  }
  QRgb background = 0;
  for (auto each = counts.begin(); each != counts.end(); ++each) {
    if (each.value() > counts.value(background)) background = each.key();
  }
  double most = 1;
  for (auto each = counts.begin(); each != counts.end(); ++each) {
    most = std::max(most, Contrast(background, each.key()));
  }
  return most;
}

void ExpectReadable(QWidget& window, const char* desktop) {
  QApplication::processEvents();
  const QImage picture = window.grab().toImage();
  const QTransform toPixels = QTransform::fromScale(picture.devicePixelRatio(), picture.devicePixelRatio());
  int read = 0;
  for (const ShownText& each : TextsIn(window)) {
    // Disabled texts may have less contrast, except the stored commands: they must be readable.
    if (!each.enabled && !each.control.starts_with("MEM")) continue;
    ++read;
    // Without the line that marks the focus: a button has no other part of one colour.
    const QRect part = each.inButton ? each.room.adjusted(4, 4, -4, -4) : each.room;
    EXPECT_GE(ContrastIn(picture, toPixels.mapRect(part)), kReadable)
        << each.control << " on a " << desktop << " desktop";
  }
  EXPECT_GT(read, 0);
}

/// Whether the window is laid out as the dialogs are. The main dialog, the Terminal Screen and the splash
/// have their own measures, the detailed list keeps its button in a row below, and what has no name is the
/// toolkit's.
bool KeepsTheDialogsMargins(const QWidget& window) {
  static const QSet<QString> others{QString(), "CQuarnDlg", "CTerminalScreen", "CSplashPage", "CPortDetails"};
  return !others.contains(window.objectName());
}

TEST_P(EveryWindowsLooks, KeepTheSameMarginOnEverySide) {
  Visit([](QWidget& shown) {
    if (!KeepsTheDialogsMargins(shown)) return;
    QRect filled;
    for (const QWidget* each : shown.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
      if (each->isVisible() && each->window() == &shown) filled |= each->geometry();
    }
    const int margin = DialogGrid(shown).Width(DialogGrid::kMargin);
    constexpr int kRounding = 2;
    EXPECT_NEAR(filled.left(), margin, kRounding);
    EXPECT_NEAR(filled.top(), margin, kRounding);
    EXPECT_NEAR(shown.rect().right() - filled.right(), margin, kRounding);
    EXPECT_NEAR(shown.rect().bottom() - filled.bottom(), margin, kRounding);
  });
}

TEST_P(EveryWindowsLooks, ReadWellOnABrightDesktop) {
  const Desktop desktop(Desktop::Bright);
  Visit([](QWidget& shown) { ExpectReadable(shown, "bright"); });
}

TEST_P(EveryWindowsLooks, ReadWellOnADarkDesktop) {
  const Desktop desktop(Desktop::Dark);
  Visit([](QWidget& shown) { ExpectReadable(shown, "dark"); });
}

/// Menus lie on windows of nearly the same colour, and lines divide them.
void ExpectVisibleLines(const QMenu& menu, const QImage& picture) {
  const QColor window = menu.palette().color(QPalette::Window);
  for (const QPoint at :
       {QPoint(0, picture.height() / 2), QPoint(picture.width() - 1, picture.height() / 2),
        QPoint(picture.width() / 2, 0), QPoint(picture.width() / 2, picture.height() - 1)}) {
    EXPECT_GE(Contrast(picture.pixel(at), window.rgb()), kVisible) << at.x() << ", " << at.y();
  }
  const QTransform toPixels = QTransform::fromScale(picture.devicePixelRatio(), picture.devicePixelRatio());
  for (QAction* each : menu.actions()) {
    if (!each->isSeparator()) continue;
    const QRect room = menu.actionGeometry(each).adjusted(10, 0, -10, 0);
    EXPECT_GE(ContrastIn(picture, toPixels.mapRect(room)), kVisible) << "separator at " << room.y();
  }
}

bool HasBorder(const QWidget& control) {
  return qobject_cast<const QAbstractButton*>(&control) != nullptr ||
         qobject_cast<const QComboBox*>(&control) != nullptr ||
         qobject_cast<const QLineEdit*>(&control) != nullptr;
}

/// A check box or radio button has its border only at the left, around what is chosen.
bool HasBorderAllAround(const QWidget& control) {
  return HasBorder(control) && qobject_cast<const QCheckBox*>(&control) == nullptr &&
         qobject_cast<const QRadioButton*>(&control) == nullptr;
}

/// The highest contrast to the first pixel in this line of pixels, which begins at `from`.
double ContrastAlong(const QImage& picture, QPoint from, QPoint step) {
  constexpr int kPixels = 8;
  double most = 1;
  for (int i = 0; i < kPixels; ++i) {
    const QPoint at = from + i * step;
    if (picture.valid(at)) most = std::max(most, Contrast(picture.pixel(from), picture.pixel(at)));
  }
  return most;
}

TEST_P(EveryWindowsLooks, ShowTheBordersOfControlsOnADarkDesktop) {
  const Desktop desktop(Desktop::Dark);
  Visit([](QWidget& shown) {
    QApplication::processEvents();
    const QImage picture = shown.grab().toImage();
    const double ratio = picture.devicePixelRatio();
    if (const auto* menu = qobject_cast<const QMenu*>(&shown)) ExpectVisibleLines(*menu, picture);
    for (const QWidget* each : shown.findChildren<QWidget*>()) {
      if (!HasBorder(*each) || !each->isVisible() || each->window() != &shown) continue;
      if (each->visibleRegion().isEmpty()) continue;
      // A circle between pixels is smoothed.
      if (ratio != std::round(ratio) && qobject_cast<const QRadioButton*>(each) != nullptr) continue;
      const QRectF place(each->mapTo(&shown, QPoint(0, 0)), each->size());
      const QRect pixels = QRectF(place.topLeft() * ratio, place.size() * ratio).toAlignedRect();
      const QPoint middle = pixels.center();
      // From just outside the control to just within its border.
      constexpr int kOutside = 3;
      const auto expect = [&](QPoint from, QPoint step, const char* side) {
        EXPECT_GE(ContrastAlong(picture, from, step), kVisible) << each->objectName().toStdString() << side;
      };
      expect({pixels.left() - kOutside, middle.y()}, {1, 0}, ", left");
      if (!HasBorderAllAround(*each)) continue;
      expect({pixels.right() + kOutside, middle.y()}, {-1, 0}, ", right");
      expect({middle.x(), pixels.top() - kOutside}, {0, 1}, ", top");
      expect({middle.x(), pixels.bottom() + kOutside}, {0, -1}, ", bottom");
    }
  });
}

TEST_P(EveryWindowsLooks, FollowTheDesktopWhileOpen) {
  const Desktop desktop(Desktop::Bright);
  Visit([](QWidget& shown) {
    Desktop::Be(Desktop::Dark);
    ExpectReadable(shown, "darkened");
    Desktop::Be(Desktop::Bright);
    ExpectReadable(shown, "brightened");
  });
}

INSTANTIATE_TEST_SUITE_P(All, EveryWindowsLooks, ::testing::ValuesIn(WindowCases()), NameOfCase);

}  // namespace
}  // namespace quarn::test
