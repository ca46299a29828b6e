// The computer loses its power during a command of the menu, and during a year of changes.

#include "app/file_commands_fixture.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"
#include "system/faults/power_loss.h"

namespace quarn::test {
namespace {

/// The working file names COM7.
class PowerLossInCommands : public FileCommandsTest {
 protected:
  template <class Act>
  void PlayCommand(const char* name, int different, const Act& act) {
    EXPECT_EQ(m_losses.PlaySound(name, act), different);
  }

  PowerLosses m_losses{Path(QString())};
};

TEST_F(PowerLossInCommands, Save) {
  InForceAndChanged();
  PlayCommand("Save", 3, [this] { commands->Save(); });
}

TEST_F(PowerLossInCommands, SaveAsToANewName) {
  chooser.answer = Path(QStringLiteral("new.qrn"));
  // It gets its name when it is complete, and there is no other file.
  PlayCommand("Save As to a new name", 2, [this] { commands->SaveAs(); });
  EXPECT_EQ(program->userFile, chooser.answer);
}

TEST_F(PowerLossInCommands, SaveAsOverAnotherFile) {
  chooser.answer = WithPort("COM3", QStringLiteral("other.qrn"));
  PlayCommand("Save As over another file", 3, [this] { commands->SaveAs(); });
}

TEST_F(PowerLossInCommands, Open) {
  chooser.answer = WithPort("COM3");
  PlayCommand("Open", 3, [this] { commands->Open(); });
  EXPECT_EQ(program->userFile, chooser.answer);
}

TEST_F(PowerLossInCommands, RestoreDefaultsOverAFile) {
  InForceAndChanged();
  messages->answers = {true, true};
  PlayCommand("Restore Defaults", 3, [this] { commands->RestoreDefaults(); });
  EXPECT_EQ(WorkingBytes(), NormalisedBytes(SortedDefaults()));
}

struct Change {
  SettingsKey key;
  QString value;
};

/// Every value of every setting that has a few, and some texts for those that have many.
std::vector<Change> EveryChange() {
  std::vector<Change> changes;
  const auto add = [&](SettingsKey key, const auto& values) {
    for (const SettingValue& value : values) changes.push_back({key, value.text.toString()});
  };
  add(keys::kComBps, values::kBitRates);
  add(keys::kComBits, values::kDataBits);
  add(keys::kComParity, values::kParities);
  add(keys::kComStop, values::kStopBits);
  add(keys::kComBuf, values::kBufferSizes);
  add(keys::kDelimiter, values::kDelimiters);
  add(keys::kPortSpeed, values::kSpeeds);
  add(keys::kInputMax, std::array{values::kWide, values::kMedium, values::kNarrow});
  add(keys::kBkColor, std::array{values::kBlack, values::kSystemColours, values::kNavy});
  add(keys::kMainPos, std::array{values::kTopRight, values::kTopLeft});
  for (const SettingsKey key :
       {keys::kAutoClr, keys::kEnblNull, keys::kFuncKey, keys::kLineNum, keys::kRTimeout, keys::kStartDisp}) {
    for (const QStringView value : {kOff, kOn}) changes.push_back({key, value.toString()});
  }
  for (const SettingsKey key : keys::kMem) {
    for (const int length : {1, 64}) changes.push_back({key, QString(length, QChar(u'x'))});
  }
  return changes;
}

/// A year of work: three changes, with a copy under a new name after the first and after the second one.
/// Nothing flushes the folder in between, so any version of each file may come back beside any of the others.
TEST_F(PowerLossInCommands, MoreThanAThousandDifferentDisks) {
  const QString& working = program->workingSettingsFile;
  const auto saveAs = [this](const char* name) {
    chooser.answer = Path(QLatin1String(name));
    commands->SaveAs();
  };
  int number = 0;
  for (const Change& change : EveryChange()) {
    for (const char* const name : {"first.qrn", "second.qrn"}) QFile::remove(Path(QLatin1String(name)));
    ++number;
    const QString what = change.key.Text().toString() + change.value;
    m_losses.PlaySound(qPrintable(what), [&] {
      UpdateValue(working, change.key, change.value);
      saveAs("first.qrn");
      UpdateValue(working, keys::kChkCmd, QStringLiteral("id %1").arg(number));
      saveAs("second.qrn");
      UpdateValue(working, keys::kComPort, QStringLiteral("COM%1").arg(1 + number % 9));
    });
    ASSERT_EQ(messages->shown, QStringList());
    if (HasFailure()) return;
  }
  std::cout << "power loss: " << number << " changes: " << m_losses.Disks() << " different disks, "
            << m_losses.DisksWithoutTemporaryFiles() << " if temporary files are not counted\n";
  EXPECT_GT(m_losses.DisksWithoutTemporaryFiles(), 1000U);
}

}  // namespace
}  // namespace quarn::test
