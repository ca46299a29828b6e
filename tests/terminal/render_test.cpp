#include "terminal/render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace quarn {
namespace {

TEST(SpellOut, LeavesNothingThatWouldSteerATerminal) {
  QByteArray bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  const QByteArray text = SpellOut(bytes);
  EXPECT_TRUE(std::ranges::all_of(text, [](char each) { return each >= ' ' && each <= '~'; }));
  EXPECT_EQ(SpellOut("a\r\n\x1b[2J\x7f\x9b"), "a<CR><LF><ESC>[2J<DEL><0x9b>");
  EXPECT_EQ(SpellOut(text), text) << "what is spelled out stays as it is";
}

TEST(RenderCommandForLog, KeepsWhatCanBePrintedAndSpellsOutTheRest) {
  EXPECT_EQ(RenderCommandForLog(QStringLiteral("*IDN? [x] <y>")), "*IDN? [x] <y>");
  EXPECT_EQ(RenderCommandForLog(QString()), "");
  EXPECT_EQ(RenderCommandForLog(QStringLiteral("a\r[b]\rOK\t\x1b[0m\x7f")),
            "a<CR>[b]<CR>OK<HT><ESC>[0m<DEL>");
}

TEST(RenderBytesForLog, SpellsOutWhatIsNotPrintable) {
  EXPECT_EQ(RenderBytesForLog(QByteArray("\x02"
                                         "A\x05\r\x7f\xff",
                                         6)),
            QByteArray("<STX>A<ENG>\r<DEL><0xff>"));
}

TEST(RenderBytesForLog, GivesEveryControlByteItsMnemonic) {
  const char* const expected[32] = {"<NULL>", "<SOH>", "<STX>", "<ETX>", "<EOT>", "<ENG>", "<ACK>", "<BEL>",
                                    "<BS>",   "<HT>",  "<LF>",  "<VT>",  "<FF>",  "\r",    "<SO>",  "<SI>",
                                    "<DLE>",  "<DC1>", "<DC2>", "<DC3>", "<DC4>", "<NAK>", "<SYN>", "<ETB>",
                                    "<CAN>",  "<EM>",  "<SUB>", "<ESC>", "<FS>",  "<GS>",  "<RS>",  "<US>"};
  for (int byte = 0; byte < 32; ++byte) {
    EXPECT_EQ(RenderBytesForLog(QByteArray(1, static_cast<char>(byte))), QByteArray(expected[byte])) << byte;
  }
}

TEST(RenderBytesForLog, KeepsTheUnusedEntryForCr) { EXPECT_STREQ(ControlMnemonicTable[0x0D], "<CR>"); }

TEST(RenderBytesForLog, LeavesPrintableAsciiAlone) {
  QByteArray printable;
  for (char c = 0x20; c < 0x7F; ++c) printable.append(c);
  EXPECT_EQ(printable.size(), 95);
  EXPECT_EQ(RenderBytesForLog(printable), printable);
}

TEST(RenderBytesForLog, WritesHighBytesAsTwoLowerCaseDigits) {
  for (int byte = 0x80; byte <= 0xFF; ++byte) {
    char expected[8];
    std::snprintf(expected, sizeof expected, "<0x%02x>", byte);
    EXPECT_EQ(RenderBytesForLog(QByteArray(1, static_cast<char>(byte))), QByteArray(expected));
  }
  EXPECT_EQ(RenderBytesForLog("\xa5"), QByteArray("<0xa5>"));
}

TEST(RenderBytesForLog, ALoneCrIsALineEndAndNeverSpelledOut) {
  EXPECT_EQ(RenderBytesForLog("\r"), QByteArray("\r"));
}

TEST(WrapLogText, BreaksAtTheWidth) {
  EXPECT_EQ(WrapLogText(QByteArray(48, 'a'), 48), QByteArray(48, 'a'));
  EXPECT_EQ(WrapLogText(QByteArray(49, 'a'), 48), QByteArray(48, 'a') + "\ra");
  EXPECT_EQ(WrapLogText(QByteArray(130, 'a'), 64), QByteArray(64, 'a') + '\r' + QByteArray(64, 'a') + "\raa");
}

TEST(WrapLogText, AFullLineThatEndsByItselfGetsNoEmptyLine) {
  EXPECT_EQ(WrapLogText(QByteArray(4, 'a') + "\rb", 4), QByteArray("aaaa\rb"));
}

TEST(WrapLogText, CountsAnewAfterEachLineEnd) {
  EXPECT_EQ(WrapLogText("aaa\rbbbbb\r\rcccc", 4), QByteArray("aaa\rbbbb\rb\r\rcccc"));
}

}  // namespace
}  // namespace quarn
