#include "dialogs/settings/options.h"

#include <QCheckBox>
#include <QRadioButton>

#include "dialogs/option_dialog_fixture.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

using CommandFormat = OptionDialogFixture<CCommandFormat>;

TEST_F(CommandFormat, HasItsTitleLabelsAndSize) {
  Open();
  EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quarn - Command Format"));
  EXPECT_EQ(Labels(), (QStringList{"Delimiter   -----", "Max Receive Buffer Size ----", "Port Speed ----"}));
  EXPECT_EQ(Button(1013).text(), QStringLiteral("OK"));
  EXPECT_GE(dialog->width(), DialogGrid(*dialog).Width(239));
  EXPECT_GE(dialog->height(), DialogGrid(*dialog).Height(90));
  EXPECT_FALSE(dialog->isModal());
}

TEST_F(CommandFormat, HasRadioButtonsAndOneCheckBox) {
  Open();
  for (const int id : {1015, 1021, 1022, 1018, 1085, 1087, 1086, 1017, 1020}) {
    EXPECT_NE(qobject_cast<QRadioButton*>(&Button(id)), nullptr) << id;
  }
  EXPECT_NE(qobject_cast<QCheckBox*>(&Button(1088)), nullptr);
  EXPECT_EQ(dialog->findChildren<QAbstractButton*>().size(), 11);
}

TEST_F(CommandFormat, EveryClickIsInTheFileAtOnce) {
  Open();
  for (const auto& choice : std::vector<Choice>{
           {1021, "LF", "DELIMITER=CR", "DELIMITER=LF"},
           {1022, "CRLF", "DELIMITER=CR", "DELIMITER=CRLF"},
           {1018, "STX / ETX ", "DELIMITER=CR", "DELIMITER=STX_ETX"},
           {1015, "CR", "DELIMITER=CR", "DELIMITER=CR"},
       }) {
    ExpectChoice(choice);
    EXPECT_EQ("DELIMITER=" + settings.delimiter.toLatin1(), choice.chosen);
    QList<int> checked{choice.id, 1017, 1085, 1088};
    std::sort(checked.begin(), checked.end());
    EXPECT_EQ(Checked(), checked);
  }
}

TEST_F(CommandFormat, BufferSizesAreWrittenInK) {
  Open();
  const QByteArray line = "COM_BUF=" + settings.comBuf.toLatin1();
  ExpectChoice({1086, "6144", line, "COM_BUF=6K"});
  EXPECT_EQ(settings.comBuf, QStringLiteral("6K"));
  EXPECT_EQ(Checked(), (QList<int>{1015, 1017, 1086, 1088}));
  ExpectChoice({1087, "2048", line, "COM_BUF=2K"});
  EXPECT_EQ(Checked(), (QList<int>{1015, 1017, 1087, 1088}));
  ExpectChoice({1085, "1024", line, "COM_BUF=1K"});
  EXPECT_EQ(Checked(), (QList<int>{1015, 1017, 1085, 1088}));
  EXPECT_EQ(settings.comBuf, QStringLiteral("1K"));
}

TEST_F(CommandFormat, AClickOnTheValueInForceWritesItAgain) {
  Open();
  Click(1015);
  EXPECT_TRUE(Written());
  EXPECT_EQ(File(), before);
}

TEST_F(CommandFormat, TheTimeoutIsOnOrOff) {
  settings.rTimeout = QStringLiteral("OFF");
  ASSERT_TRUE(UpdateValue(Context().workingSettingsFile, keys::kRTimeout, settings.rTimeout));
  before = File();
  Open();
  ExpectChoice({1088, " Apply Response Timeout", "R_TIMEOUT=OFF", "R_TIMEOUT=ON"});
  EXPECT_EQ(settings.rTimeout, QStringLiteral("ON"));
  EXPECT_TRUE(Button(1088).isChecked());
  Click(1088);
  EXPECT_EQ(settings.rTimeout, QStringLiteral("OFF"));
  EXPECT_FALSE(Button(1088).isChecked());
  EXPECT_EQ(File(), before);
}

TEST_F(CommandFormat, SpeedWithoutAPortIsSetAndWritten) {
  Open();
  ExpectChoice({1020, "LOW", "PORT_SPEED=HIGH", "PORT_SPEED=LOW"});
  EXPECT_EQ(settings.portSpeed, QStringLiteral("LOW"));
  EXPECT_EQ(Checked(), (QList<int>{1015, 1020, 1085, 1088}));
  Written();
  Click(1020);
  EXPECT_FALSE(Written());
  EXPECT_TRUE(Button(1020).isChecked());
  ExpectChoice({1017, "HIGH", "PORT_SPEED=HIGH", "PORT_SPEED=HIGH"});
}

TEST_F(CommandFormat, ARefusedSpeedStaysWhatItWas) {
  Connect()->setTimeoutsWorks = false;
  Open();
  messages.whileShown = [&] {
    // The dialog handles requests only after the message is closed.
    state.requests.close.Add(Window::CommandFormat);
    QTest::qWait(3 * PolledDialog::kTickMs);
    EXPECT_TRUE(dialog);
  };
  Click(1020);
  EXPECT_EQ(messages.shown,
            (QStringList{"plain/Failed to set serial port timeouts",
                         "error/: Error//Failed to configure  \"COM3\"/Check COM port state."}));
  EXPECT_EQ(settings.portSpeed, QStringLiteral("HIGH"));
  EXPECT_FALSE(Written());
  ASSERT_TRUE(dialog);
  EXPECT_TRUE(Button(1017).isChecked());
  EXPECT_FALSE(Button(1020).isChecked());
  EXPECT_TRUE(Until([&] { return dialog.isNull(); }));
}

TEST_F(CommandFormat, ShowsTheSettingsAndAgainOnRequest) {
  Open();
  settings.delimiter = QStringLiteral("STX_ETX");
  settings.comBuf = QStringLiteral("2K");
  settings.portSpeed = QStringLiteral("LOW");
  settings.rTimeout = QStringLiteral("ON");
  dialog->setWindowTitle(QString());
  state.requests.refresh.Add(Window::CommandFormat);
  EXPECT_TRUE(Until([&] { return !state.requests.refresh.Contains(Window::CommandFormat); }));
  EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quarn - Command Format"));
  EXPECT_EQ(Checked(), (QList<int>{1018, 1020, 1087, 1088}));
  EXPECT_FALSE(Written());
}

TEST_F(CommandFormat, AnUnknownValueChecksNothing) {
  settings.delimiter = QStringLiteral("cr");
  settings.comBuf = QString();
  settings.portSpeed = QStringLiteral("FAST");
  settings.rTimeout = QStringLiteral("on");
  Open();
  EXPECT_EQ(Checked(), QList<int>());
  Click(1086);
  EXPECT_EQ(Checked(), QList<int>{1086});
}

TEST_F(CommandFormat, KeysChooseAsTheMouseDoes) {
  Open();
  EXPECT_TRUE(Button(1013).hasFocus());
  // Each group once, by the button that is checked.
  EXPECT_EQ(TabOrder(), (QList<int>{1015, 1085, 1017, 1088, 1013}));
  Button(1015).setFocus();
  Press(Qt::Key_Right);
  EXPECT_EQ(settings.delimiter, QStringLiteral("LF"));
  EXPECT_TRUE(Button(1021).hasFocus());
  Button(1088).setFocus();
  const QString former = settings.rTimeout;
  Press(Qt::Key_Space);
  EXPECT_NE(settings.rTimeout, former);
}

TEST_F(CommandFormat, ClosesInEveryWay) { ExpectClosing(Window::CommandFormat, 1013); }

TEST_F(CommandFormat, ClipsNothingWithAnyFont) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    ExpectNoneClipped();
    delete dialog.data();
  }
}

}  // namespace
}  // namespace quarn::test
