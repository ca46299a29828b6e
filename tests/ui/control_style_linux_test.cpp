#include "ui/control_style.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QStyle>
#include <QTest>
#include <memory>
#include <ostream>

#include "support/dialog_controls.h"
#include "ui/contrast.h"
#include "ui/controls.h"

namespace quarn::test {
namespace {

/// The least contrast of what is no text, but must be seen.
constexpr double kVisible = 3;
constexpr QSize kSize(120, 28);
/// So much of the window is in the picture of a control, on each side.
constexpr int kAround = 5;

struct Colours {
  const char* name;
  QColor window, base, text, highlight;
};

void PrintTo(const Colours& colours, std::ostream* out) { *out << colours.name; }

/// Those of GTK's Adwaita:dark, of KDE's Breeze Dark, a black desktop, and a bright one.
const Colours kGtkDark{"GtkDark", {53, 53, 53}, {45, 45, 45}, {238, 238, 236}, {21, 83, 158}};
const Colours kKdeDark{"KdeDark", {42, 46, 50}, {27, 30, 32}, {252, 252, 252}, {61, 174, 233}};
const Colours kBlack{"Black", {0, 0, 0}, {0, 0, 0}, {255, 255, 255}, {26, 26, 26}};
const Colours kBright{"Bright", {239, 239, 239}, {255, 255, 255}, {0, 0, 0}, {48, 140, 198}};

QPalette PaletteOf(const Colours& colours) {
  QPalette palette(colours.text, colours.window, colours.window.lighter(), colours.window.darker(),
                   colours.window.darker(), colours.text, colours.base);
  palette.setColor(QPalette::Highlight, colours.highlight);
  return palette;
}

/// A window with one control of each kind, in these colours and the style under test.
class ControlStyle : public ::testing::TestWithParam<Colours> {
 protected:
  ControlStyle() : m_styleBefore(QApplication::style()->name()), m_paletteBefore(QApplication::palette()) {
    QApplication::setStyle(QStringLiteral("fusion"));
    UseVisibleOutlines();
    QApplication::setPalette(PaletteOf(GetParam()));
    window = std::make_unique<QDialog>();
    Add<QRadioButton>("radio button")->setText(QStringLiteral("N (48)"));
    Add<QCheckBox>("check box")->setText(QStringLiteral("Line Number"));
    Add<QPushButton>("button");
    Add<DialogButton>("default button")->setDefault(true);
    auto* box = Add<QComboBox>("combo box");
    box->addItem(QStringLiteral("115200"));
    Add<QLineEdit>("field");
    window->setFixedSize(200, 20 + static_cast<int>(controls.size()) * 40);
  }
  ~ControlStyle() override {
    window.reset();
    QApplication::setPalette(m_paletteBefore);
    QApplication::setStyle(m_styleBefore);
  }

  template <typename Control>
  Control* Add(const char* name) {
    auto* control = new Control(window.get());
    control->setObjectName(QLatin1String(name));
    control->setGeometry(QRect({20, 10 + static_cast<int>(controls.size()) * 40}, kSize));
    controls.append(control);
    return control;
  }
  /// The control and what is around it.
  [[nodiscard]] QImage PictureOf(const QWidget& control) const {
    return window->grab(control.geometry().adjusted(-kAround, -kAround, kAround, kAround)).toImage();
  }

  std::unique_ptr<QDialog> window;
  QList<QWidget*> controls;

 private:
  QString m_styleBefore;
  QPalette m_paletteBefore;
};

/// The highest contrast at the control's left edge, where its border is and no text.
double ContrastOfBorder(const QImage& picture, const QColor& background) {
  constexpr int kWidth = kAround + 4;
  double best = 1;
  for (int x = 0; x < kWidth; ++x) {
    best = std::max(best, ContrastRatio(picture.pixelColor(x, picture.height() / 2), background));
  }
  return best;
}

class DarkControlStyle : public ControlStyle {};

TEST_P(DarkControlStyle, EveryControlHasABorderThatIsSeen) {
  ASSERT_NO_FATAL_FAILURE(ShowActive(*window));
  for (const QWidget* each : controls) {
    EXPECT_GE(ContrastOfBorder(PictureOf(*each), GetParam().window), kVisible)
        << each->objectName().toStdString();
  }
}

TEST_P(ControlStyle, TheFocusIsSeen) {
  ASSERT_NO_FATAL_FAILURE(ShowActive(*window));
  for (QWidget* each : controls) {
    // A field shows it with its caret.
    if (qobject_cast<QLineEdit*>(each) != nullptr) continue;
    controls.last()->setFocus(Qt::TabFocusReason);
    const QImage without = PictureOf(*each);
    each->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(each->hasFocus());
    const QImage with = PictureOf(*each);
    int changed = 0;
    for (int y = 0; y < with.height(); ++y) {
      for (int x = 0; x < with.width(); ++x) {
        if (ContrastRatio(with.pixelColor(x, y), without.pixelColor(x, y)) >= kVisible) ++changed;
      }
    }
    // At least two lines as long as the control is high.
    EXPECT_GE(changed, 2 * kSize.height()) << each->objectName().toStdString();
  }
}

std::string NameOf(const ::testing::TestParamInfo<Colours>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(On, DarkControlStyle, ::testing::Values(kGtkDark, kKdeDark, kBlack), NameOf);
INSTANTIATE_TEST_SUITE_P(On, ControlStyle, ::testing::Values(kGtkDark, kKdeDark, kBlack, kBright), NameOf);

TEST(StylesOfOtherDesktops, StayAsTheyAre) {
  const QString before = QApplication::style()->name();
  QApplication::setStyle(QStringLiteral("windows"));
  const QStyle* style = QApplication::style();
  UseVisibleOutlines();
  EXPECT_EQ(QApplication::style(), style);
  QApplication::setStyle(before);
}

}  // namespace
}  // namespace quarn::test
