#include <QElapsedTimer>

#include "app/file_commands_fixture.h"
#include "settings/settings_load_save.h"
#include "settings/working_file.h"
#include "system/faults/call_faults.h"
#include "terminal/function_key_table.h"

namespace quarn::test {
namespace {

constexpr int kPauseMs = 50;
/// For the rest of an operation, on a busy computer.
constexpr int kBesidesMs = 2000;

/// A disk with slow writes and flushes. Windows write during a click, so they do not react for the time of
/// the operation.
class SlowWrites : public FileCommandsTest {
 protected:
  /// Runs an operation that replaces files this often: one write and one flush each, and no other delay.
  template <class Act>
  void ExpectReplacements(int replacements, const Act& act) {
    FaultPlan slow;
    slow.pauseMs = kPauseMs;
    messages->shown.clear();
    QElapsedTimer taken;
    taken.start();
    int writes = 0;
    {
      const CallFaults faults(QFile::encodeName(Path(QString())).toStdString(), slow);
      act();
      writes = faults.Writes();
    }
    EXPECT_EQ(writes, 2 * replacements);
    EXPECT_GE(taken.elapsed(), writes * kPauseMs);
    EXPECT_LT(taken.elapsed(), writes * kPauseMs + kBesidesMs);
  }
  static QByteArray Defaults() { return NormalisedBytes(SortedDefaults()); }
  static QByteArray Com3() { return Defaults().replace("COM_PORT=NONE", "COM_PORT=COM3"); }
};

TEST_F(SlowWrites, AnOptionIsOneReplacement) {
  ExpectReplacements(
      1, [&] { UpdateValue(program->workingSettingsFile, keys::kComPort, QStringLiteral("COM3")); });
  EXPECT_EQ(WorkingBytes(), Com3());
}

TEST_F(SlowWrites, TheStoredCommandsAreOneReplacement) {
  FunctionKeyTable table(program->settings);
  for (int i = 0; i < kStoredCommandCount; ++i) table.SetEditText(i, QStringLiteral("stored"));
  ExpectReplacements(1, [&] { EXPECT_TRUE(table.Save(program->workingSettingsFile)); });
  EXPECT_EQ(WorkingBytes().count("=stored\r\n"), kStoredCommandCount);
}

TEST_F(SlowWrites, AllSettingsAreOneReplacement) {
  program->settings.comBits = QStringLiteral("7");
  ExpectReplacements(
      1, [&] { EXPECT_TRUE(StoreAllSettings(program->workingSettingsFile, program->settings, *messages)); });
  EXPECT_TRUE(WorkingBytes().contains("\nCOM_BITS=7\r\n"));
}

TEST_F(SlowWrites, SaveAndSaveAsAreOneReplacement) {
  const QString user = InForceAndChanged();
  const QByteArray working = WorkingBytes();
  ExpectReplacements(1, [&] { commands->Save(); });
  EXPECT_EQ(BytesOf(user), working);
  chooser.answer = Path(QStringLiteral("other.qrn"));
  ExpectReplacements(1, [&] { commands->SaveAs(); });
  EXPECT_EQ(BytesOf(chooser.answer), working);
  EXPECT_EQ(messages->shown, QStringList());
}

TEST_F(SlowWrites, OpenIsOneReplacement) {
  chooser.answer = WithPort("COM3");
  ExpectReplacements(1, [&] { commands->Open(); });
  EXPECT_EQ(WorkingBytes(), Com3());
  EXPECT_EQ(messages->shown, (QStringList{kOpened, Connected("COM3")}));
}

TEST_F(SlowWrites, OpeningAFileOfAnotherVersionIsOneReplacementOfEach) {
  chooser.answer = WithBytes(Com3().replace("MARK_COLOR=WHITE", "OLD_KEY=1"), QStringLiteral("user.qrn"));
  messages->answers = {true};
  ExpectReplacements(2, [&] { commands->Open(); });
  EXPECT_EQ(WorkingBytes(), Com3());
  EXPECT_EQ(BytesOf(chooser.answer), Com3());
}

TEST_F(SlowWrites, RestoringTheDefaultsIsOneReplacement) {
  messages->answers = {true};
  ExpectReplacements(1, [&] { commands->RestoreDefaults(); });
  EXPECT_EQ(WorkingBytes(), Defaults());
}

TEST_F(SlowWrites, AStartWithoutAFileIsOneReplacement) {
  ASSERT_TRUE(QFile::remove(program->workingSettingsFile));
  ExpectReplacements(
      1, [&] { LoadInitialSettings(program->workingSettingsFile, program->settings, *messages); });
  EXPECT_EQ(WorkingBytes(), Defaults());
}

TEST_F(SlowWrites, AStartWithAGoodFileWritesNothing) {
  ExpectReplacements(
      0, [&] { LoadInitialSettings(program->workingSettingsFile, program->settings, *messages); });
}

}  // namespace
}  // namespace quarn::test
