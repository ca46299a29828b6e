#include "ui/pictures.h"

#include <gtest/gtest.h>

#include <QImage>

namespace quarn {
namespace {

bool HasOpaqueAndClearPixels(const QImage& image) {
  bool opaque = false;
  bool clear = false;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const int alpha = image.pixelColor(x, y).alpha();
      opaque = opaque || alpha == 255;
      clear = clear || alpha == 0;
    }
  }
  return opaque && clear;
}

TEST(Pictures, CarryTheirNumbers) {
  EXPECT_EQ(kLogoResource, 160);
  EXPECT_EQ(kWarningResource, 142);
  EXPECT_EQ(kIconResource, 128);
}

TEST(Pictures, FillTheRoomTheyAreGiven) {
  for (const double ratio : {1.0, 1.5, 2.0}) {
    for (const int side : {40, 64, 96, 130}) {
      const QPixmap logo = Logo({side, side}, ratio);
      EXPECT_EQ(logo.deviceIndependentSize().toSize(), QSize(side, side));
      EXPECT_EQ(logo.width(), qRound(side * ratio));
      EXPECT_TRUE(HasOpaqueAndClearPixels(logo.toImage()));
    }
  }
}

TEST(Pictures, KeepTheirProportions) {
  EXPECT_EQ(Logo({100, 64}, 1.0).size(), QSize(64, 64));
  EXPECT_EQ(WarningPicture({36, 32}, 1.0).size(), QSize(36, 32));
  EXPECT_EQ(WarningPicture({36, 100}, 2.0).size(), QSize(72, 64));
  EXPECT_TRUE(HasOpaqueAndClearPixels(WarningPicture({40, 38}, 1.0).toImage()));
}

TEST(Pictures, AreShownAsDrawnWhereASizeFits) {
  EXPECT_EQ(
      Logo({64, 64}, 1.5).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied),
      QImage(QStringLiteral(":/pictures/logo-96.png")).convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

TEST(Pictures, TheIconHasTheSizesThatWindowsShow) {
  const QIcon icon = ApplicationIcon();
  QList<QSize> sizes = icon.availableSizes();
  EXPECT_EQ(sizes.size(), 4);
  for (const int side : {16, 32, 48, 64}) {
    EXPECT_TRUE(sizes.contains(QSize(side, side))) << side;
    const QImage image = icon.pixmap(QSize(side, side), 1.0).toImage();
    EXPECT_EQ(image.size(), QSize(side, side));
    EXPECT_TRUE(HasOpaqueAndClearPixels(image)) << side;
  }
}

}  // namespace
}  // namespace quarn
