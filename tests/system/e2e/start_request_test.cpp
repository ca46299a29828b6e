#include "system/e2e/starts.h"

namespace quarn::test {
namespace {

/// What a second start hands over while the first one is not ready for it yet.
class StartRequest : public Starts {
 protected:
  /// The box of the second one, behind which the first one goes on.
  void HandOver(const QString& file, const QProcessEnvironment& environment) {
    ProgramRun second(QStringLiteral(QUARN_PROGRAM), {file}, environment);
    EXPECT_TRUE(BoxSays(kPlain, {kAlreadyOpen}));
    AnswerBox(kPlain, QStringLiteral("Return"));
    const std::optional<ProgramEnd> end = second.WaitForEnd();
    ASSERT_TRUE(end);
    EXPECT_EQ(end->exitCode, 1);
  }
  void HandOver(const QString& file) { HandOver(file, program.processEnvironment()); }
  QString FileWithPort(const QString& name) {
    return WriteUserFile(name, {{QStringLiteral("COM_PORT"), kPort}});
  }
  void Loads(const QString& name) {
    EXPECT_TRUE(Passing(QStringLiteral("QRN file was opened successfully.")));
    EXPECT_TRUE(Passing(QStringLiteral("Successfully Connected to \"COM3\".")));
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
    EXPECT_TRUE(Eventually([&] {
      return Texts(kMain).value(2).endsWith(u'/' + name + QStringLiteral(" )"));
    })) << Texts(kMain).join(QLatin1Char('|')).toStdString();
  }

  const QString kAlreadyOpen = QStringLiteral("\"Quarn\" is already open !");
};

TEST_F(StartRequest, DuringTheSplash) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  PlugIn("* -> line \"OK\"");
  const QString file = FileWithPort(QStringLiteral("bench.qrn"));
  StartProgram();
  ASSERT_TRUE(SplashIsThere());
  HandOver(file);
  Loads(QStringLiteral("bench.qrn"));
}

TEST_F(StartRequest, WhileABoxOfTheStartWaits) {
  WriteSettings({{QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
  PlugIn("* -> line \"OK\"");
  StartProgram();
  WaitForWindow(kInformation);
  // The last file counts, and a start without one does not take it back.
  HandOver(FileWithPort(QStringLiteral("first.qrn")));
  HandOver(FileWithPort(QStringLiteral("last.qrn")));
  HandOver(QString());
  AcknowledgeNoPort();
  Loads(QStringLiteral("last.qrn"));
}

TEST_F(StartRequest, BringsABoxOfTheStartToTheFrontOfAnotherProgram) {
  WriteSettings({{QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
  StartProgram();
  const QString box = WaitForWindow(kInformation);
  ChildProcess other;
  other.setProcessEnvironment(desktop.Environment());
  other.start(QStringLiteral(QUARN_DRAG_SOURCE), {});
  Focus(WaitForWindow(QStringLiteral("^Drag Source$")));
  HandOver(QString());
  EXPECT_TRUE(BecomesActive(box));
  AcknowledgeNoPort();
  EXPECT_TRUE(BecomesActive(WaitForWindow(kMain)));
  End(other);
}

TEST_F(StartRequest, FromASessionOfItsOwn) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  // Each run in a sandbox has one.
  const QTemporaryDir session;
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), session.path());
  HandOver(FileWithPort(QStringLiteral("bench.qrn")), environment);
  Loads(QStringLiteral("bench.qrn"));
}

}  // namespace
}  // namespace quarn::test
