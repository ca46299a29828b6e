#include "ui/contrast.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

TEST(Contrast, IsThatOfTheLightThatColoursGive) {
  EXPECT_NEAR(ContrastRatio(Qt::black, Qt::white), 21, 0.01);
  EXPECT_NEAR(ContrastRatio(Qt::white, Qt::black), 21, 0.01);
  EXPECT_NEAR(ContrastRatio(Qt::red, Qt::red), 1, 0.01);
  EXPECT_NEAR(ContrastRatio(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.01);
  EXPECT_NEAR(ContrastRatio(QColor(0x0A, 0x0A, 0x0A), Qt::black), 1.06, 0.01);
  EXPECT_NEAR(ContrastRatio(QColor(0xFF, 0, 0), Qt::white), 4.00, 0.01);
  EXPECT_NEAR(ContrastRatio(QColor(0, 0xFF, 0), Qt::white), 1.37, 0.01);
  EXPECT_NEAR(ContrastRatio(QColor(0, 0, 0xFF), Qt::white), 8.59, 0.01);
}

TEST(Contrast, WhatCanBeReadStaysAsItIs) {
  EXPECT_EQ(ReadableOn(Qt::white, QColor(0, 0, 0xFF)), QColor(0, 0, 0xFF));
  EXPECT_EQ(ReadableOn(Qt::black, Qt::yellow), QColor(Qt::yellow));
}

TEST(Contrast, WhatCannotBeReadBecomesNoBrighterOrDarkerThanItMust) {
  for (const QColor& background : {QColor(Qt::black), QColor(0x30, 0x30, 0x30), QColor(0x80, 0x80, 0x80),
                                   QColor(0xC0, 0xC0, 0xC0), QColor(Qt::white)}) {
    for (const QColor& colour : {QColor(0, 0, 0xFF), QColor(0x40, 0x40, 0x40), QColor(0x90, 0x90, 0x90)}) {
      const double ratio = ContrastRatio(ReadableOn(background, colour), background);
      EXPECT_GE(ratio, 4.5);
      if (ContrastRatio(colour, background) < 4.5) {
        EXPECT_LT(ratio, 4.9) << background.name().toStdString() << colour.name().toStdString();
      }
    }
  }
}

}  // namespace
}  // namespace quarn
