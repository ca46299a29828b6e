#include "ui/tool_tip.h"

#include <QFontMetrics>
#include <QLabel>
#include <QScreen>
#include <QTextDocument>
#include <QToolTip>

#include "app/main_dialog_fixture.h"
#include "settings/settings_table.h"
#include "support/dialog_controls.h"

namespace quarn::test {
namespace {

int WidestToolTip() { return kMostToolTipCharacters * QFontMetrics(QToolTip::font()).averageCharWidth(); }

/// The text that the tool tip shows.
QString Read(const QString& toolTip) {
  if (!Qt::mightBeRichText(toolTip)) return toolTip;
  QTextDocument document;
  document.setHtml(toolTip);
  return document.toPlainText();
}

int WidthOf(const QString& toolTip) {
  return QFontMetrics(QToolTip::font()).horizontalAdvance(Read(toolTip));
}

TEST(ToolTip, ShowsATextAsItStands) {
  QLabel label;
  for (const char16_t* text : {u"meas?", u"<b>bold</b>", u"<img src=\"/dev/zero\">", u"A & B", u"&lt;",
                               u"a  b", u"<?xml", u"x<y>z"}) {
    SetPlainToolTip(label, QString::fromUtf16(text));
    EXPECT_EQ(Read(label.toolTip()), QString::fromUtf16(text));
  }
  SetPlainToolTip(label, QString());
  EXPECT_EQ(label.toolTip(), QString());
}

TEST(ToolTip, IsOneLineWithoutCharactersThatAreNone) {
  QLabel label;
  SetPlainToolTip(label, QStringLiteral("a\nb\tc\x7F\u202Ed\U0001F600"));
  EXPECT_EQ(label.toolTip(), QStringLiteral("a\u240Ab\u2409c\u2421\uFFFDd\U0001F600"));
}

TEST(ToolTip, IsCutWhereItIsTooLong) {
  QLabel label;
  const QString text = QStringLiteral("start ") + QString(1000, u'w') + QStringLiteral(" end");
  SetPlainToolTip(label, text);
  EXPECT_TRUE(label.toolTip().startsWith(QStringLiteral("start ")));
  EXPECT_TRUE(label.toolTip().endsWith(QChar(0x2026)));
  EXPECT_LE(WidthOf(label.toolTip()), WidestToolTip());
  EXPECT_GE(WidthOf(label.toolTip()), WidestToolTip() / 2);
  SetPlainToolTip(label, text, Qt::ElideMiddle);
  EXPECT_TRUE(label.toolTip().endsWith(QStringLiteral(" end")));
  EXPECT_LE(WidthOf(label.toolTip()), WidestToolTip());
}

TEST(ToolTip, IsNoWiderThanTheScreen) {
  const QFont before = QToolTip::font();
  QFont large = before;
  large.setPixelSize(80);
  QToolTip::setFont(large);
  QLabel label;
  SetPlainToolTip(label, QString(1000, u'w'));
  EXPECT_LT(WidthOf(label.toolTip()), label.screen()->availableGeometry().width());
  QToolTip::setFont(before);
}

class ToolTips : public MainDialog {
 protected:
  void SetUp() override {
    program.settings = DefaultSettings();
    MainDialog::SetUp();
  }
};

TEST_F(ToolTips, OfTheUserFileIsNoMarkup) {
  const QString path = QStringLiteral("/tmp/<b>x</b>&amp;.qrn");
  program.userFile = path;
  dialog.ShowUserFile();
  EXPECT_EQ(Read(Control<QLabel>(1075)->toolTip()), QDir::toNativeSeparators(path));
  program.userFile = QStringLiteral("/tmp/") + QString(3000, u'd') + QStringLiteral("/mine.qrn");
  dialog.ShowUserFile();
  EXPECT_LE(WidthOf(Control<QLabel>(1075)->toolTip()), WidestToolTip());
  EXPECT_TRUE(Control<QLabel>(1075)->toolTip().endsWith(QStringLiteral("mine.qrn")));
}

TEST_F(ToolTips, OfTheFunctionKeysFitTheScreen) {
  program.settings.mem[0] = QStringLiteral("<h1>") + QString(1000, u'w');
  dialog.OpenTerminalScreen();
  const auto* button = TerminalScreen()->findChild<QPushButton*>(QStringLiteral("F 1"));
  ASSERT_NE(button, nullptr);
  EXPECT_LE(WidthOf(button->toolTip()), WidestToolTip());
  EXPECT_TRUE(Read(button->toolTip()).startsWith(QStringLiteral("<h1>www")));
}

}  // namespace
}  // namespace quarn::test
