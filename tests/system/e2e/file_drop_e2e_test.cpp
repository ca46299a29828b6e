#include <QFile>

#include "system/e2e/commands.h"

namespace quarn::test {
namespace {

class Drop : public Commands {
 protected:
  /// Drags these files from another program's window onto the main window, and lets go of them there; all
  /// the time with these keys held. They are to be copied.
  void DropOnMain(const QStringList& paths, const QStringList& held = {}) {
    ChildProcess source;
    source.setProcessEnvironment(desktop.Environment());
    source.start(QStringLiteral(QUARN_DRAG_SOURCE), paths);
    QByteArray told;
    const auto tells = [&](const char* what) {
      source.waitForReadyRead(1);
      told += source.readAllStandardOutput();
      return told.endsWith(QByteArray(what) + '\n');
    };
    Focus(WaitForWindow(kMain));
    const QString handle = WaitForWindow(QStringLiteral("^Drag Source$"));
    Focus(handle);
    const QPoint from = Geometry(handle).center();
    Mouse({QStringLiteral("mousemove")}, from);
    for (const QString& key : held) desktop.Input({QStringLiteral("keydown"), key});
    desktop.Input({QStringLiteral("mousedown"), QStringLiteral("1")});
    int step = 0;
    const auto nudge = [&](QPoint place) {
      step = (step + 1) % 3;
      Mouse({QStringLiteral("mousemove")}, place + QPoint(step, step));
    };
    ASSERT_TRUE(Eventually([&] {
      nudge(from);
      return tells("dragging");
    }));
    const QPoint target = Geometry(WaitForWindow(kMain)).center();
    ASSERT_TRUE(Eventually([&] {
      nudge(target);
      return tells("welcome");
    })) << told.toStdString();
    desktop.Input({QStringLiteral("mouseup"), QStringLiteral("1")});
    EXPECT_TRUE(Eventually([&] { return tells("over"); }));
    for (const QString& key : held) desktop.Input({QStringLiteral("keyup"), key});
    EXPECT_TRUE(told.endsWith("taken\nover\n")) << told.toStdString();
    End(source);
  }

 private:
  void Mouse(QStringList steps, QPoint place) {
    steps += {QString::number(place.x()), QString::number(place.y())};
    desktop.Input(steps);
  }
};

TEST_F(Drop, OnlyTheFirstOfThreeFilesIsLoaded) {
  const QList<QPair<QString, QString>> port{{QStringLiteral("COM_PORT"), kPort}};
  const QString first = UserFile(
      QStringLiteral("first.qrn"),
      port + QList<QPair<QString, QString>>{{QStringLiteral("MEM1"), QStringLiteral("of the first")}});
  const QString second = UserFile(QStringLiteral("second.qrn"), port);
  const QString third = UserFile(QStringLiteral("third.qrn"), port);
  const QByteArray bytes = BytesOf(first);
  PlugIn("* -> line \"OK\"");
  StartProgram({third});
  ASSERT_TRUE(FileInForceBecomes(third));
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  DropOnMain({first, second, third});
  EXPECT_TRUE(Passes(QStringLiteral("QRN file was opened successfully.")));
  EXPECT_TRUE(Passes(kConnected));
  EXPECT_TRUE(FileInForceBecomes(first));
  EXPECT_EQ(BytesOf(SettingsFile()), bytes);
  ChangeSettings();
  DropOnMain({second});
  Answer(kProceed, kNo);
  EXPECT_TRUE(FileInForceBecomes(first));
}

TEST_F(Drop, AFileIsNotMovedWithShift) {
  const QString file = UserFile(QStringLiteral("mine.qrn"), {{QStringLiteral("COM_PORT"), kPort}});
  PlugIn("* -> line \"OK\"");
  StartProgram({UserFile(QStringLiteral("other.qrn"), {{QStringLiteral("COM_PORT"), kPort}})});
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  DropOnMain({file}, {QStringLiteral("shift")});
  EXPECT_TRUE(FileInForceBecomes(file));
}

TEST_F(Drop, ABrokenFileEndsInTheInternalState) {
  const QString good = UserFile(QStringLiteral("good.qrn"), {{QStringLiteral("COM_PORT"), kPort}});
  const QString broken = PathOf(QStringLiteral("broken.qrn"));
  QFile file(broken);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("no settings at all\n");
  file.close();
  PlugIn("* -> line \"OK\"");
  StartProgram({good});
  ASSERT_TRUE(FileInForceBecomes(good));
  const QByteArray before = BytesOf(SettingsFile());
  DropOnMain({broken});
  Acknowledge(kError,
              {QStringLiteral("Config file is invalid."), QStringLiteral("Click \"OK\" to quit loading.")});
  EXPECT_TRUE(StatusBecomes(kInternal));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EXPECT_EQ(BytesOf(SettingsFile()), before);
}

}  // namespace
}  // namespace quarn::test
