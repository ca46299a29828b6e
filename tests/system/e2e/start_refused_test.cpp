#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include "identity.h"
#include "system/e2e/commands.h"
#include "system/e2e/starts.h"

namespace quarn::test {
namespace {

/// Starts that are over before there is a main window, and those that just get through.
class StartRefused : public Starts {
 protected:
  const QString kScaling = QStringLiteral("Scaling must be 100, 125, 150 or 175(%).");
  const QString kLimit = QStringLiteral("Quarn cannot go on and ends: a limit has been passed.\n\n");

  void ExpectNothingWritten() {
    EXPECT_FALSE(QFileInfo::exists(SettingsFile()));
    QStringList files = QDir(QFileInfo(SettingsFile()).path()).entryList(QDir::Files | QDir::Hidden);
    files.removeAll(QStringLiteral("Quarn.exe.lock"));
    EXPECT_EQ(files, QStringList());
  }
};

TEST_F(StartRefused, WhileAnotherOneRuns) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  const QByteArray settings = Bytes(SettingsFile());
  const QDateTime written = QFileInfo(SettingsFile()).lastModified();
  const std::unique_ptr<ProgramRun> second = StartAnother({home.filePath(QStringLiteral("no.qrn"))});
  Acknowledge(kPlain, {QStringLiteral("\"Quarn\" is already open !")});
  const std::optional<ProgramEnd> end = second->WaitForEnd();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->crashed);
  EXPECT_NE(end->exitCode, 0);
  EXPECT_EQ(Bytes(SettingsFile()), settings);
  EXPECT_EQ(QFileInfo(SettingsFile()).lastModified(), written);
  Focus(terminal);
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("id\r"));

  // One that has crashed is in nobody's way.
  program.kill();
  ASSERT_TRUE(program.waitForFinished());
  StartProgram();
  terminal = WaitForWindow(kTerminal);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS")));
}

TEST_F(StartRefused, AndBringsTheFirstOneToTheFrontOfAnotherProgram) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  ChildProcess other;
  other.setProcessEnvironment(desktop.Environment());
  other.start(QStringLiteral(QUARN_DRAG_SOURCE), {});
  Focus(WaitForWindow(QStringLiteral("^Drag Source$")));
  const std::unique_ptr<ProgramRun> second = StartAnother();
  Acknowledge(kPlain, {QStringLiteral("\"Quarn\" is already open !")});
  ASSERT_TRUE(second->WaitForEnd());
  EXPECT_TRUE(BecomesActive(WaitForWindow(kMain)));
  End(other);
}

TEST_F(StartRefused, WithAFileThatTheFirstOneThenLoads) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  const QString file = WriteUserFile(QStringLiteral("bench.qrn"), {{QStringLiteral("COM_PORT"), kPort}});
  desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("windowminimize"), WaitForWindow(kMain)});
  const std::unique_ptr<ProgramRun> second = StartAnother({file});
  Acknowledge(kPlain, {QStringLiteral("\"Quarn\" is already open !")});
  ASSERT_TRUE(second->WaitForEnd());
  EXPECT_TRUE(Passing(QStringLiteral("QRN file was opened successfully.")));
  EXPECT_TRUE(Eventually([this] { return Texts(kMain).value(2).endsWith(QStringLiteral("/bench.qrn )")); }))
      << Texts(kMain).join(QLatin1Char('|')).toStdString();
  EXPECT_FALSE(WaitForWindow(kMain).isEmpty()) << "it is not minimised any more";
}

TEST_F(StartRefused, WithABoxThatIsFramedLikeTheFirstOnes) {
  StartProgram();
  const QString first = WaitForWindow(kWarning);
  const std::unique_ptr<ProgramRun> second = StartAnother();
  EXPECT_TRUE(BoxSays(kPlain, {QStringLiteral("\"Quarn\" is already open !")}));
  const QString box = WaitForWindow(kPlain);
  EXPECT_EQ(Frame(box), Frame(first));
  for (const char* property : {"_NET_WM_ICON", "_NET_WM_WINDOW_TYPE", "_MOTIF_WM_HINTS", "WM_CLASS"}) {
    const auto of = [&](const QString& window) {
      return desktop.Run(QStringLiteral("xprop"), {QStringLiteral("-id"), window, QStringLiteral("-len"),
                                                   QStringLiteral("100000"), QLatin1String(property)});
    };
    EXPECT_TRUE(of(box).contains(" = ")) << of(box).left(100).toStdString();
    EXPECT_EQ(of(box), of(first)) << property;
  }
  AnswerBox(kPlain, QStringLiteral("OK"));
  EXPECT_TRUE(second->WaitForEnd());
}

TEST_F(StartRefused, InFrontOfTheFirstOnesSplash) {
  StartProgram();
  ASSERT_TRUE(SplashIsThere());
  const std::unique_ptr<ProgramRun> second = StartAnother({});
  const QString box = WaitForWindow(kPlain);
  ASSERT_FALSE(box.isEmpty());
  // Above all that is put above the rest: a box without that state lies below the splash.
  EXPECT_TRUE(Eventually([&] {
    const QByteArray state =
        desktop.Run(QStringLiteral("xprop"), {QStringLiteral("-id"), box, QStringLiteral("_NET_WM_STATE")});
    return state.contains("_NET_WM_STATE_ABOVE");
  }));
  AnswerBox(kPlain, QStringLiteral("OK"));
  const std::optional<ProgramEnd> end = second->WaitForEnd();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->crashed);
}

TEST_F(StartRefused, WhereNobodyCanTellWhetherAnotherOneRuns) {
  // Where the lock file belongs there is something else.
  ASSERT_TRUE(QDir(runtime.path()).mkdir(QStringLiteral("Quarn.exe.lock")));
  StartProgram();
  Acknowledge(kPlain, {QStringLiteral("\"Quarn\" found opening error\n%1/Quarn.exe.lock: Is a directory")
                           .arg(runtime.path())});
  EXPECT_TRUE(EndsWith(1));
  ExpectNothingWritten();
}

TEST_F(StartRefused, WhereNobodyNamesAFolderForTheSettings) {
  SetVariable("XDG_CONFIG_HOME", QString());
  SetVariable("HOME", QStringLiteral("."));
  program.setWorkingDirectory(home.path());
  StartProgram();
  Acknowledge(kPlain,
              {QStringLiteral("There is no folder for the settings: HOME does not name one from / on.")});
  EXPECT_TRUE(EndsWith(1));
  EXPECT_FALSE(QFileInfo::exists(home.filePath(QStringLiteral(".config"))));
}

TEST_F(StartRefused, AtAScalingThatTheDialogsAreNotMadeFor) {
  // On a terminal, where a line says more, there is no second box.
  const FarEnd screen;
  program.setProcessChannelMode(QProcess::SeparateChannels);
  program.setStandardErrorFile(screen.NodePath());
  for (const char* factor : {"2", "1.3"}) {
    SCOPED_TRACE(factor);
    SetVariable("QT_SCALE_FACTOR", QLatin1String(factor));
    StartProgram();
    EXPECT_TRUE(SplashIsThere());
    Acknowledge(kError, {QStringLiteral("Windows display scaling Settings"), kScaling});
    EXPECT_TRUE(EndsWith(1));
  }
  SetVariable("QT_SCALE_FACTOR", QStringLiteral("1"));
  SetVariable("QT_FONT_DPI", QStringLiteral("119"));
  StartProgram();
  Acknowledge(kError, {QStringLiteral("Windows display scaling Settings"), kScaling});
  EXPECT_TRUE(EndsWith(1));
  ExpectNothingWritten();
}

TEST_F(StartRefused, AndTheLineThatItPrintsStartsIt) {
  WriteSettings({{QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
  struct Case {
    const char* factor;  ///< the person's own, beside the desktop's
    const char* dpi;
    const char* line;
  };
  for (const Case& each : {Case{"1", "192",
                                "quarn: it does not start at a scaling of 200 per cent; to start it at 150: "
                                "QT_SCALE_FACTOR=0.75 quarn\n"},
                           Case{"1.6", "120",
                                "quarn: it does not start at a scaling of 200 per cent; to start it at 150: "
                                "QT_SCALE_FACTOR=1.2 quarn\n"},
                           Case{"1", "119",
                                "quarn: it does not start at a scaling of 124 per cent; to start it at 100: "
                                "QT_SCALE_FACTOR=0.8065 quarn\n"}}) {
    SCOPED_TRACE(each.line);
    SetVariable("QT_SCALE_FACTOR", QLatin1String(each.factor));
    SetVariable("QT_FONT_DPI", QLatin1String(each.dpi));
    const std::unique_ptr<ProgramRun> refused = StartAnother();
    Acknowledge(kError, {QStringLiteral("Windows display scaling Settings"), kScaling});
    // Nobody may read standard error.
    Acknowledge(kPlain, {QString::fromLatin1(each.line).trimmed()});
    const std::optional<ProgramEnd> end = refused->WaitForEnd();
    ASSERT_TRUE(end);
    EXPECT_EQ(end->exitCode, 1);
    EXPECT_EQ(end->errors, QByteArray(each.line));
    const QByteArray factor = end->errors.split('=').value(1).split(' ').value(0);
    SetVariable("QT_SCALE_FACTOR", QString::fromLatin1(factor));
    StartProgram();
    AcknowledgeNoPort();
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
    End(program);
  }
}

TEST_F(StartRefused, NotAtTheOtherScalings) {
  WriteSettings({{QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
  const auto starts = [this] {
    StartProgram();
    AcknowledgeNoPort();
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
    End(program);
  };
  for (const char* factor : {"1.25", "1.5", "1.75"}) {
    SCOPED_TRACE(factor);
    SetVariable("QT_SCALE_FACTOR", QLatin1String(factor));
    starts();
  }
  SetVariable("QT_SCALE_FACTOR", QStringLiteral("1"));
  SetVariable("QT_FONT_DPI", QStringLiteral("168"));
  starts();
}

TEST_F(StartRefused, WhereTheMenuDoesNotFitOnOneLine) {
  const QString style = home.filePath(QStringLiteral("large.qss"));
  WriteBytes(style, "QMenuBar { font-size: 40px }");
  StartProgram({QStringLiteral("-stylesheet"), style});
  EXPECT_TRUE(SplashIsThere());
  QStringList texts;
  EXPECT_TRUE(Eventually([&] {
    texts = Texts(kError);
    return texts.size() == 2;
  }));
  EXPECT_EQ(texts.value(0), QStringLiteral("Windows Text Font size Settings"));
  const QRegularExpression line(QStringLiteral("^Text font size \\([1-9]\\d* \\) is too large$"));
  EXPECT_TRUE(line.match(texts.value(1)).hasMatch()) << texts.value(1).toStdString();
  AnswerBox(kError, QStringLiteral("Return"));
  EXPECT_TRUE(EndsWith(1));
  ExpectNothingWritten();
}

TEST_F(StartRefused, WithANameThatIsTooLong) {
  constexpr int kLongest = 258;
  const std::unique_ptr<ProgramRun> run = StartAnother({QString(kLongest + 1, QLatin1Char('n'))});
  Acknowledge(kPlain, {kLimit + QStringLiteral("file name on the command line of 259 characters, at most 258 "
                                               "fit.")});
  const std::optional<ProgramEnd> end = run->WaitForEnd();
  ASSERT_TRUE(end);
  EXPECT_TRUE(end->crashed);
  EXPECT_EQ(end->errors,
            QByteArray("quarn: bounds error: file name on the command line of 259 characters, at most 258 "
                       "fit\n"));
  EXPECT_EQ(end->output, QByteArray());
  ExpectNothingWritten();
  // One character less is only the name of a file that is not there.
  StartProgram({QString(kLongest, QLatin1Char('n'))});
  Acknowledge(kError, {QStringLiteral("QRN file was not found."),
                       QStringLiteral("Failed to load settings from QRN file.")});
}

TEST_F(StartRefused, WithALineThatIsTooLong) {
  const QString file = WriteUserFile(QStringLiteral("long.qrn"), {});
  WriteBytes(file, Bytes(file).replace("MEM0=", "MEM0=" + QByteArray(1024, 'x')));
  const QByteArray before = Bytes(file);
  const qsizetype line = before.left(before.indexOf("MEM0=")).count('\n') + 1;
  const std::unique_ptr<ProgramRun> run = StartAnother({file});
  Acknowledge(kPlain,
              {kLimit + QStringLiteral("line of %1 characters, at most 1023 fit.\n\nFile: %2\nLine: %3")
                            .arg(before.split('\n').at(line - 1).trimmed().size())
                            .arg(file)
                            .arg(line)});
  const std::optional<ProgramEnd> end = run->WaitForEnd();
  ASSERT_TRUE(end);
  EXPECT_TRUE(end->crashed);
  EXPECT_TRUE(end->errors.startsWith("quarn: bounds error: line of ")) << end->errors.toStdString();
  EXPECT_TRUE(end->errors.endsWith(": line " + QByteArray::number(line) + " of " + file.toLocal8Bit() + '\n'))
      << end->errors.toStdString();
  EXPECT_EQ(Bytes(file), before);
}

TEST_F(StartRefused, ButAnswersOnATerminalWithoutADisplay) {
  QProcessEnvironment environment = program.processEnvironment();
  environment.remove(QStringLiteral("DISPLAY"));
  environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
  const auto answer = [&](const char* argument) -> QByteArray {
    ProgramRun run(QStringLiteral(QUARN_PROGRAM), {QLatin1String(argument)}, environment);
    const std::optional<ProgramEnd> end = run.WaitForEnd();
    if (!end) return "no end";
    EXPECT_FALSE(end->crashed);
    EXPECT_EQ(end->exitCode, 0);
    EXPECT_EQ(end->errors, QByteArray());
    return end->output;
  };
  EXPECT_EQ(answer("--version"),
            QByteArray(identity::kNameAndVersion) + ", build " + identity::kBuildDate + "\n");
  const QByteArray help = answer("--help");
  EXPECT_TRUE(help.startsWith("Quarn: a terminal for serial ports.\n")) << help.toStdString();
  for (const char* part : {"\nusage: quarn [FILE]\n", ".qrn", "--help", "--version"})
    EXPECT_TRUE(help.contains(part)) << part;
  EXPECT_TRUE(help.endsWith('\n'));
  ExpectNothingWritten();
}

}  // namespace
}  // namespace quarn::test
