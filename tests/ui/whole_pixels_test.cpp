#include "ui/whole_pixels.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>
#include <cstdlib>

#include "support/dialog_controls.h"

namespace quarn::test {
namespace {

constexpr int kShortest = 21;
constexpr int kLongest = 28;

TEST(WholePixels, AreTheNearestOnes) {
  for (const qreal ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 2.5}) {
    for (int length = 0; length < 100; ++length) {
      const int whole = WholePixels(length, ratio);
      EXPECT_EQ(whole * ratio, std::round(whole * ratio)) << length << " at " << ratio;
      EXPECT_LE(std::abs(whole - length), 2) << length << " at " << ratio;
      EXPECT_EQ(WholePixels(whole, ratio), whole);
    }
  }
  EXPECT_EQ(WholePixels(21, 1.25), 20);
  EXPECT_EQ(WholePixels(22, 1.25), 24);
  EXPECT_EQ(WholePixels(23, 1.25), 24);
  EXPECT_EQ(WholePixels(23, 1.5), 24);
  EXPECT_EQ(WholePixels(23, 1), 23);
}

TEST(WholePixels, AreNotBelowTheLeast) {
  EXPECT_EQ(WholePixels(21, 1.25, 20), 20);
  EXPECT_EQ(WholePixels(21, 1.25, 21), 24);
  EXPECT_EQ(WholePixels(24, 1.25, 30), 24) << "what is whole stays";
}

TEST(WholePixels, StayAsTheyAreWhereNoneAreWhole) { EXPECT_EQ(WholePixels(23, 1.3), 23); }

int Difference(QRgb one, QRgb other) {
  return std::abs(qRed(one) - qRed(other)) + std::abs(qGreen(one) - qGreen(other)) +
         std::abs(qBlue(one) - qBlue(other));
}

/// The control with one pixel of the screen around it, where the window draws nothing.
QImage WithSurroundings(const QImage& window, const QWidget& control) {
  const qreal ratio = window.devicePixelRatio();
  const QPoint corner(static_cast<int>(std::lround(control.x() * ratio)),
                      static_cast<int>(std::lround(control.y() * ratio)));
  const QSize size(static_cast<int>(std::lround(control.width() * ratio)),
                   static_cast<int>(std::lround(control.height() * ratio)));
  return window.copy(QRect(corner, size).adjusted(-1, -1, 1, 1));
}

/// How far the border differs from the pixel before it, in the first three pixels from an edge on.
int BorderFrom(const QImage& picture, QPoint edge, QPoint step) {
  constexpr int kPixels = 3;
  int most = 0;
  for (int i = 1; i <= kPixels; ++i)
    most = std::max(most, Difference(picture.pixel(edge), picture.pixel(edge + i * step)));
  return most;
}

void ExpectAllBorders(const QImage& window, const QWidget& control) {
  const QImage picture = WithSurroundings(window, control);
  const QRect rect = picture.rect();
  const QPoint middle = rect.center();
  const int top = BorderFrom(picture, {middle.x(), rect.top()}, {0, 1});
  const int bottom = BorderFrom(picture, {middle.x(), rect.bottom()}, {0, -1});
  const int left = BorderFrom(picture, {rect.left(), middle.y()}, {1, 0});
  const int right = BorderFrom(picture, {rect.right(), middle.y()}, {-1, 0});
  const std::string which = control.metaObject()->className() + std::string(" at ") +
                            std::to_string(control.x()) + ", " + std::to_string(control.y());
  // Of a border that is cut a part may be left, which is paler. The frame of a field is pale in places
  // anyway.
  const bool isField = qobject_cast<const QLineEdit*>(&control) != nullptr;
  constexpr double kSame = 0.9;
  constexpr double kPale = 0.6;
  const double share = isField ? kPale : kSame;
  constexpr int kSeen = 60;
  EXPECT_GE(top, kSeen) << which;
  EXPECT_GE(left, kSeen) << which;
  EXPECT_GE(bottom, top * share) << which;
  EXPECT_GE(right, left * share) << which;
}

/// Rows of controls of every height, which begin at every part of a pixel.
class WholeControls : public ::testing::Test {
 protected:
  WholeControls() {
    KeepControlsWhole();
    auto* column = new QVBoxLayout(&window);
    for (int height = kShortest; height <= kLongest; ++height) {
      auto* row = new QHBoxLayout;
      row->setSpacing(5);
      Add<QPushButton>(*row, height);
      Add<QLineEdit>(*row, height);
      Add<QComboBox>(*row, height);
      column->addLayout(row);
    }
  }
  void SetUp() override {
    const double asked = qEnvironmentVariable("QT_SCALE_FACTOR", QStringLiteral("1")).toDouble();
    ASSERT_EQ(window.devicePixelRatioF(), asked) << "the scaling has not come through";
  }
  template <typename Control>
  void Add(QHBoxLayout& row, int height) {
    auto* control = new Control(&window);
    control->setMinimumSize(60 + height, height);
    control->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    control->setFocusPolicy(Qt::NoFocus);
    row.addWidget(control);
    controls.append(control);
  }

  QDialog window;
  QList<QWidget*> controls;
};

TEST_F(WholeControls, ShowAllTheirBorders) {
  for (int above = 5; above < 9; ++above) {
    window.layout()->setContentsMargins(above, above, 9, 9);
    ASSERT_NO_FATAL_FAILURE(ShowActive(window));
    const QImage picture = window.grab().toImage();
    for (const QWidget* each : controls) ExpectAllBorders(picture, *each);
  }
}

TEST_F(WholeControls, HaveWholeSizesNotBelowTheirLeast) {
  ASSERT_NO_FATAL_FAILURE(ShowActive(window));
  for (const QWidget* each : controls) {
    const qreal ratio = each->devicePixelRatioF();
    EXPECT_EQ(each->width() * ratio, std::round(each->width() * ratio));
    EXPECT_EQ(each->height() * ratio, std::round(each->height() * ratio));
    EXPECT_GE(each->height(), each->minimumHeight());
    EXPECT_GE(each->width(), each->minimumWidth());
  }
}

TEST_F(WholeControls, ThatNoLayoutPlacesKeepTheirRectangle) {
  QDialog bare;
  QPushButton button(&bare);
  button.setGeometry(3, 5, 61, 23);
  ASSERT_NO_FATAL_FAILURE(ShowActive(bare));
  EXPECT_EQ(button.geometry(), QRect(3, 5, 61, 23));
}

}  // namespace
}  // namespace quarn::test
