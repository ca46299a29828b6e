#include "app/file_commands_fixture.h"
#include "system/faults/fault_run.h"

namespace quarn::test {
namespace {

/// The messages after a good file could not be opened because of a fault.
bool MayStopOpen(const QString& message) {
  const QStringList known{
      kFileNotFound, kNotLoaded,
      QStringLiteral("error/: Error//Config file is invalid./Click \"OK\" to quit loading."),
      QStringLiteral("error/: Error//Destination folder error!/Could not open the QRN file.")};
  return known.contains(message);
}

class FileCommandFaults : public FileCommandsTest {
 protected:
  template <class Arrange, class Act, class Check>
  void PlayCommand(const char* name, const Arrange& arrange, const Act& act, const Check& check) {
    const auto afresh = [&] {
      for (const QString& file : FilesInFolder()) QFile::remove(Path(file));
      WithPort("COM7", QStringLiteral("Quarn.ini"));
      ASSERT_EQ(LoadSettings(program->workingSettingsFile, program->settings), LoadResult::Loaded);
      arrange();
      messages->shown.clear();
    };
    const std::string place = QFile::encodeName(Path(QString())).toStdString();
    FaultRun run(name, place, afresh, act, check);
    run.Play(kFileErrors);
    run.PlayHeldUp();
    EXPECT_GT(run.PlayWithoutMemory(), 0);
  }
  /// The file was saved; or a message said that it was not, and it is unchanged.
  void ExpectSaved(const Fault& fault, const QString& path, const QByteArray& before) const {
    const QByteArray bytes = QFile::exists(path) ? BytesOf(path) : QByteArray();
    if (messages->shown.isEmpty()) {
      EXPECT_EQ(bytes, WorkingBytes());
    } else {
      EXPECT_TRUE(fault.struck);
      EXPECT_EQ(messages->shown, QStringList{kNotSaved});
      EXPECT_EQ(bytes, before);
    }
    EXPECT_EQ(WorkingBytes(), PortBytes("COM7"));
    if (fault.call == "unlink") return;
    const QString name = QFileInfo(path).fileName();
    EXPECT_EQ(FilesInFolder().contains(name), !bytes.isNull());
    EXPECT_EQ(FilesInFolder().size(), bytes.isNull() ? 1 : 2);
  }
  static QByteArray PortBytes(const char* port) {
    return NormalisedBytes(SortedDefaults()).replace("COM_PORT=NONE", QByteArray("COM_PORT=") + port);
  }
};

TEST_F(FileCommandFaults, Save) {
  PlayCommand(
      "Save", [&] { InForceAndChanged(); }, [&] { commands->Save(); },
      [&](const Fault& fault) {
        ExpectSaved(fault, program->userFile, PortBytes("COM3"));
        EXPECT_EQ(program->userFile, Path(QStringLiteral("in-force.qrn")));
      });
}

TEST_F(FileCommandFaults, SaveAs) {
  chooser.answer = Path(QStringLiteral("other.qrn"));
  const auto nothingInForce = [&] { program->userFile.clear(); };
  const auto act = [&] { commands->SaveAs(); };
  const auto check = [&](const QByteArray& before) {
    return [this, before](const Fault& fault) {
      ExpectSaved(fault, chooser.answer, before);
      EXPECT_EQ(program->userFile, messages->shown.isEmpty() ? chooser.answer : QString());
    };
  };
  PlayCommand("Save As", nothingInForce, act, check(QByteArray()));
  PlayCommand(
      "Save As over another file",
      [&] {
        nothingInForce();
        WithPort("COM3", QStringLiteral("other.qrn"));
      },
      act, check(PortBytes("COM3")));
}

TEST_F(FileCommandFaults, Open) {
  PlayCommand(
      "Open", [&] { chooser.answer = WithPort("COM3"); },
      [&] {
        program->userFile.clear();
        commands->Open();
      },
      [&](const Fault& fault) {
        EXPECT_EQ(BytesOf(chooser.answer), PortBytes("COM3"));
        EXPECT_EQ(program->userFile, chooser.answer);
        const bool loaded = messages->shown.contains(kOpened);
        EXPECT_TRUE(loaded || fault.struck);
        EXPECT_EQ(WorkingBytes(), PortBytes(loaded ? "COM3" : "COM7"));
        EXPECT_EQ(program->settings.comPort, QString::fromLatin1(loaded ? "COM3" : "COM7"));
        if (loaded) {
          EXPECT_EQ(messages->shown, (QStringList{kOpened, Connected("COM3")}));
        } else if (messages->shown.size() == 1) {
          EXPECT_TRUE(MayStopOpen(messages->shown.first())) << messages->shown.first().toStdString();
        } else {
          ADD_FAILURE() << messages->shown.join(u'\n').toStdString();
        }
      });
}

TEST_F(FileCommandFaults, RestoreDefaults) {
  PlayCommand(
      "Restore Defaults",
      [&] {
        program->userFile.clear();
        messages->answers = {true};
      },
      [&] { commands->RestoreDefaults(); },
      [&](const Fault& fault) {
        EXPECT_EQ(messages->shown, (QStringList{kRestore, kRestored, kUndefined}));
        const QByteArray bytes = WorkingBytes();
        EXPECT_TRUE(bytes == NormalisedBytes(SortedDefaults()) ||
                    (fault.struck && bytes == PortBytes("COM7")));
        EXPECT_EQ(program->settings.comPort, QStringLiteral("NONE"));
      });
}

TEST_F(FileCommandFaults, ExitAsksOnceMoreRatherThanLosingAChange) {
  PlayCommand(
      "exit with a change", [&] { InForceAndChanged(); }, [&] { EXPECT_FALSE(commands->MayExit()); },
      [&](const Fault&) { EXPECT_EQ(messages->shown, QStringList{kExit}); });
}

}  // namespace
}  // namespace quarn::test
