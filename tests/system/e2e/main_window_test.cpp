#include "identity.h"
#include "settings/key_store.h"
#include "system/e2e/starts.h"

namespace quarn::test {
namespace {

const QString kFile = QStringLiteral("File");
const QString kExit = QStringLiteral("Exit");

/// The main window beside the Terminal Screen and without it, and the ways out of the program.
class MainWindow : public Starts {
 protected:
  const QString kAbout = QStringLiteral("^About  Quarn");

  /// Starts with COM3 and without the Terminal Screen.
  void StartAlone(const Values& values = {}) {
    WriteSettings(
        Values{{QStringLiteral("COM_PORT"), kPort}, {QStringLiteral("START_DISP"), QStringLiteral("OFF")}} +
        values);
    PlugIn("* -> line \"OK\"");
    StartProgram();
    ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
    main = WaitForWindow(kMain);
  }
  /// Starts with a user file in force.
  void StartWithUserFile() {
    userFile = WriteUserFile(
        QStringLiteral("bench.qrn"),
        {{QStringLiteral("COM_PORT"), kPort}, {QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
    PlugIn("* -> line \"OK\"");
    StartProgram({userFile});
    ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
    main = WaitForWindow(kMain);
    ASSERT_TRUE(MenuItemEnabled(kFile, kExit));
  }
  void ChangeSettings() {
    ASSERT_TRUE(UpdateValue(SettingsFile(), SettingsKey(u"MEM5="), QStringLiteral("changed")));
  }
  void AnswerExitQuestion(const char* button) {
    EXPECT_TRUE(BoxSays(kConfirmation, {QStringLiteral("Settings have been changed."),
                                        QStringLiteral("Exit program without saving?")}));
    EXPECT_EQ(Buttons(kConfirmation), (QStringList{QStringLiteral("YES"), QStringLiteral("NO")}));
    AnswerBox(kConfirmation, QLatin1String(button));
  }
  bool StillRuns() { return !program.waitForFinished(0) && program.state() == QProcess::Running; }
  /// The about box, ended in this way.
  void LookAtAboutBox(const char* buttonOrKey) {
    EXPECT_TRUE(BoxSays(kAbout, {QStringLiteral("Quarn  (Ver. 1.00)"), QStringLiteral("Serial Port Terminal"),
                                 QString::fromLatin1(identity::kBuildLine), QStringLiteral("Halvo"),
                                 QStringLiteral("Simple and high performance"),
                                 QStringLiteral("https://www.halvo.example")}));
    EXPECT_EQ(Title(WaitForWindow(kAbout)), QStringLiteral("About  Quarn - Serial Port Terminal "));
    EXPECT_EQ(Buttons(kAbout), QStringList{QStringLiteral("OK")});
    AnswerBox(kAbout, QLatin1String(buttonOrKey));
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  }
  void ExpectPlacedAt(double xShare, double yShare) {
    const QSize screen(1280, 1024);
    QRect outer;
    QPoint place;
    EXPECT_TRUE(Eventually([&] {
      outer = Outer(main);
      place = {int((screen.width() - outer.width()) * xShare),
               int((screen.height() - outer.height()) * yShare)};
      return outer.topLeft() == place;
    })) << outer.x()
        << ',' << outer.y() << " instead of " << place.x() << ',' << place.y();
  }

  QString main;
  QString userFile;
};

TEST_F(MainWindow, AloneAtTheTopRight) {
  StartAlone({{QStringLiteral("MAIN_POS"), QStringLiteral("TR")}});
  EXPECT_TRUE(SwitchBecomes("ON"));
  EXPECT_TRUE(desktop.Windows(kTerminal).isEmpty());
  ExpectPlacedAt(0.98, 0.03);

  // Enter and Escape do nothing; the about box afterwards shows that they have been looked at.
  Focus(main);
  Press({QStringLiteral("Return"), QStringLiteral("KP_Enter"), QStringLiteral("Escape")});
  ChooseFromMenu(QStringLiteral("Help"), QStringLiteral("About"));
  LookAtAboutBox("OK");
  EXPECT_TRUE(desktop.Windows(kTerminal).isEmpty());
  EXPECT_TRUE(SwitchBecomes("ON"));

  ClickButton(kMain, QStringLiteral("ON"), [this] { return !desktop.Windows(kTerminal).isEmpty(); });
  EXPECT_TRUE(SwitchBecomes("OFF"));
  ClickButton(kMain, QStringLiteral("OFF"), [this] { return desktop.Windows(kTerminal).isEmpty(); });
  EXPECT_TRUE(SwitchBecomes("ON"));
}

TEST_F(MainWindow, AtTheTopLeftPassesKeysOn) {
  StartConnected("* -> line \"OK\"", {{QStringLiteral("MAIN_POS"), QStringLiteral("elsewhere")}});
  main = WaitForWindow(kMain);
  ExpectPlacedAt(0.03, 0.03);
  // The key itself is lost on the way.
  Focus(main);
  Press({QStringLiteral("x")});
  EXPECT_TRUE(BecomesActive(terminal));
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("id\r"));
}

TEST_F(MainWindow, TellsAboutItself) {
  StartAlone();
  ChooseFromMenu(QStringLiteral("Help"), QStringLiteral("About"));
  LookAtAboutBox("Escape");
  // Below the switch there is nothing but the window itself.
  const QRect place = Geometry(main);
  EXPECT_TRUE(Eventually([&] {
    ClickAt(main, QPoint(place.width() / 2, place.height() - 3), 3);
    Press({QStringLiteral("Down"), QStringLiteral("Return")});
    return Eventually([this] { return FindWindow(kAbout).has_value(); }, 1500);
  }));
  LookAtAboutBox("OK");
}

TEST_F(MainWindow, HasASmallAndABigIcon) {
  StartAlone();
  QByteArray told;
  EXPECT_TRUE(Eventually([&] {
    told =
        desktop.Run(QStringLiteral("xprop"), {QStringLiteral("-id"), main, QStringLiteral("_NET_WM_ICON")});
    return told.contains("Icon (16 x 16)") && told.contains("Icon (32 x 32)");
  })) << told.left(200).toStdString();
}

TEST_F(MainWindow, TheMenuKeyIsPassedOnAsEveryKeyIs) {
  StartConnected("* -> line \"OK\"");
  main = WaitForWindow(kMain);
  Focus(main);
  Press({QStringLiteral("Menu")});
  EXPECT_TRUE(BecomesActive(terminal));
}

TEST_F(MainWindow, ExitsWithoutAQuestionInTheInternalConfiguration) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(StatusBecomes(kInternal));
  ChangeSettings();
  const QByteArray settings = Bytes(SettingsFile());
  ClickCloseBox(WaitForWindow(kMain), [this] { return program.waitForFinished(0); });
  EXPECT_TRUE(EndsWith(0));
  EXPECT_EQ(Bytes(SettingsFile()), settings);
}

TEST_F(MainWindow, ExitsWithoutAQuestionWhenNothingHasChanged) {
  StartWithUserFile();
  ChooseFromMenu(kFile, kExit);
  EXPECT_TRUE(EndsWith(0));
  EXPECT_EQ(Bytes(userFile), Bytes(SettingsFile()));
}

TEST_F(MainWindow, AsksBeforeItExitsWhenSettingsHaveChanged) {
  StartWithUserFile();
  const QByteArray saved = Bytes(userFile);
  ChangeSettings();
  const QByteArray changed = Bytes(SettingsFile());
  ChooseFromMenu(kFile, kExit);
  AnswerExitQuestion("NO");
  EXPECT_TRUE(StillRuns());
  ClickCloseBox(main, [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
  AnswerExitQuestion("Escape");
  EXPECT_TRUE(StillRuns());
  // Still at work: the port is connected, and the question comes again.
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  ClickCloseBox(main, [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
  AnswerExitQuestion("YES");
  EXPECT_TRUE(EndsWith(0));
  EXPECT_EQ(Bytes(userFile), saved);
  EXPECT_EQ(Bytes(SettingsFile()), changed);
}

}  // namespace
}  // namespace quarn::test
