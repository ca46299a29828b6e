#include "ui/showable_text.h"

#include <gtest/gtest.h>

#include <QFontMetrics>

namespace quarn {
namespace {

const QFont kMonospace(QStringLiteral("DejaVu Sans Mono"));

TEST(ShowableText, HasLettersThatSomeFontHas) {
  EXPECT_TRUE(CanShow(kMonospace, QStringLiteral("Quarn (A)...")));
  EXPECT_TRUE(CanShow(kMonospace, QString()));
}

TEST(ShowableText, NeedsEachOfItsLetters) {
  // No font has one for this number, which is left free for private use.
  const char32_t free = 0x10FFFD;
  EXPECT_FALSE(CanShow(kMonospace, QStringLiteral("Quarn") + QString::fromUcs4(&free, 1)));
}

TEST(ShowableText, MayTakeLettersFromAnotherFont) {
  // The number 0 of N'Ko: DejaVu Sans has it, its monospace relative has not.
  const QString letter(QChar(0x07C0));
  EXPECT_TRUE(CanShow(kMonospace, letter));
  QFont alone = kMonospace;
  alone.setStyleStrategy(QFont::NoFontMerging);
  EXPECT_FALSE(CanShow(alone, letter));
}

}  // namespace
}  // namespace quarn
