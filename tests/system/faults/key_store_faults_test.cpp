#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/user_file.h"
#include "system/faults/faulty_files.h"

namespace quarn::test {
namespace {

class KeyStoreFaults : public FaultyFiles {
 protected:
  /// The working file alone, for its owner alone.
  void PutWorking(const QByteArray& bytes) {
    Clear();
    MakePrivate(WithBytes(bytes));
  }
  void ExpectWorking(const Fault& fault, const QByteArray& before, const QByteArray& after) const {
    ExpectOldOrNew(fault, working, before, after);
    ExpectFiles(fault, {QStringLiteral("Quarn.ini")});
    EXPECT_EQ(ModeOf(working), 0600U);
  }

  const QString working = Path();
  const QByteArray old = WithPort("COM7");
};

TEST_F(KeyStoreFaults, TheLayerSeesWhatTheLibraryCalls) {
  PutWorking(old);
  CallFaults faults(Place(), {});
  UpdateValue(working, keys::kComPort, QStringLiteral("COM3"));
  for (const char* call : {"open", "read", "write", "fdatasync", "rename", "close"}) {
    EXPECT_TRUE(faults.Seen().contains(call)) << call;
  }
}

TEST_F(KeyStoreFaults, NoNewFileIsMadeOverWhatStandsThere) {
  PutWorking(old);
  const QString copy = Path(QStringLiteral("copy.qrn"));
  CallFaults faults(Place(), {});
  UpdateValue(working, keys::kComPort, QStringLiteral("COM3"));
  EXPECT_TRUE(CopySettingsFile(working, copy));
  EXPECT_TRUE(WriteDefaultFile(working));
  EXPECT_TRUE(WriteDefaultFile(Path(QStringLiteral("fresh.qrn"))));
  EXPECT_EQ(faults.MadeOverAnything(), 0);
  // That it would be seen.
  WithBytes("x", QStringLiteral("beside"));
  EXPECT_EQ(faults.MadeOverAnything(), 1);
}

TEST_F(KeyStoreFaults, UpdatingAValue) {
  bool said = false;
  PlayFaults(
      "update a value", [&] { PutWorking(old); },
      [&] { said = UpdateValue(working, keys::kComPort, QStringLiteral("COM3")); },
      [&](const Fault& fault) {
        EXPECT_TRUE(said) << "an update that could not be written is only logged";
        ExpectWorking(fault, old, WithPort("COM3"));
      });
}

TEST_F(KeyStoreFaults, UpdatingAValueThroughALink) {
  PlayFaults(
      "update a value through a link",
      [&] {
        Clear();
        ASSERT_TRUE(QFile::link(WithBytes(old, QStringLiteral("real.ini")), working));
      },
      [&] { UpdateValue(working, keys::kComPort, QStringLiteral("COM3")); },
      [&](const Fault& fault) {
        ExpectOldOrNew(fault, working, old, WithPort("COM3"));
        ExpectFiles(fault, {QStringLiteral("Quarn.ini"), QStringLiteral("real.ini")});
        EXPECT_TRUE(QFileInfo(working).isSymLink());
      });
}

TEST_F(KeyStoreFaults, SavingAllSettings) {
  SettingsRecord record = DefaultSettings();
  QByteArray saved = NormalisedBytes(SortedDefaults());
  for (int i = 0; i < kStoredCommandCount; ++i) {
    record.mem[static_cast<std::size_t>(i)] = QStringLiteral("stored");
    saved.replace("=function-" + QByteArray::number(i + 1) + "\r", "=stored\r");
  }
  // Both take the text of one setting.
  saved.replace("FUNC_KEY=ON", "FUNC_KEY=OFF");
  const QByteArray before = NormalisedBytes(SortedDefaults());
  bool said = false;
  PlayFaults(
      "save all settings", [&] { PutWorking(before); }, [&] { said = SaveAllSettings(working, record); },
      [&](const Fault& fault) {
        EXPECT_TRUE(said) << "what could not be written is only logged";
        ExpectWorking(fault, before, saved);
      });
}

TEST_F(KeyStoreFaults, MakingTheDefaultFile) {
  bool made = false;
  const QByteArray defaults = NormalisedBytes(SortedDefaults());
  const auto act = [&] { made = WriteDefaultFile(working); };
  PlayFaults(
      "make the default file", [&] { Clear(); }, act,
      [&](const Fault& fault) {
        EXPECT_EQ(BytesAt(working), made ? defaults : QByteArray());
        EXPECT_TRUE(made || fault.struck);
        ExpectFiles(fault, made ? QStringList{QStringLiteral("Quarn.ini")} : QStringList());
      });
  PlayFaults(
      "make the default file over another", [&] { PutWorking(old); }, act,
      [&](const Fault& fault) {
        EXPECT_EQ(BytesAt(working), made ? defaults : old);
        ExpectWorking(fault, old, defaults);
      });
}

TEST_F(KeyStoreFaults, AddingAndRemovingAKey) {
  bool done = false;
  const QByteArray without = QByteArray(old).replace("MARK_COLOR=WHITE\r\n", "");
  PlayFaults(
      "add a key", [&] { PutWorking(without); },
      [&] { done = AddKeyLine(working, QStringLiteral("MARK_COLOR=WHITE")); },
      [&](const Fault& fault) {
        EXPECT_EQ(BytesAt(working), done ? old : without);
        ExpectWorking(fault, without, old);
      });
  PlayFaults(
      "remove a key", [&] { PutWorking(old); }, [&] { done = RemoveKey(working, keys::kMarkColor); },
      [&](const Fault& fault) {
        EXPECT_EQ(BytesAt(working), done ? without : old);
        ExpectWorking(fault, old, without);
      });
}

TEST_F(KeyStoreFaults, CopyingASettingsFile) {
  const QString copy = Path(QStringLiteral("copy.qrn"));
  const QStringList both{QStringLiteral("Quarn.ini"), QStringLiteral("copy.qrn")};
  bool copied = false;
  const auto act = [&] { copied = CopySettingsFile(working, copy); };
  PlayFaults(
      "copy over another file",
      [&] {
        PutWorking(old);
        MakePrivate(WithBytes(WithPort("COM1"), QStringLiteral("copy.qrn")));
      },
      act,
      [&](const Fault& fault) {
        EXPECT_EQ(BytesAt(copy), copied ? old : WithPort("COM1"));
        EXPECT_TRUE(copied || fault.struck);
        EXPECT_EQ(BytesAt(working), old);
        EXPECT_EQ(ModeOf(copy), 0600U);
        ExpectFiles(fault, both);
      });
  PlayFaults(
      "copy to a new place", [&] { PutWorking(old); }, act,
      [&](const Fault& fault) {
        EXPECT_EQ(BytesAt(copy), copied ? old : QByteArray());
        EXPECT_TRUE(copied || fault.struck);
        EXPECT_EQ(BytesAt(working), old);
        ExpectFiles(fault, copied ? both : QStringList{QStringLiteral("Quarn.ini")});
      });
}

TEST_F(KeyStoreFaults, ComparingTwoFilesNeverCallsAChangeNone) {
  bool same = false;
  const QString user = Path(QStringLiteral("user.qrn"));
  QByteArray userBytes;
  const auto arrange = [&] {
    PutWorking(old);
    WithBytes(userBytes, QStringLiteral("user.qrn"));
  };
  const auto act = [&] { same = HoldSameSettings(user, working); };
  userBytes = WithPort("COM3");
  PlayFaults("compare files that differ", arrange, act, [&](const Fault&) { EXPECT_FALSE(same); });
  userBytes = old;
  PlayFaults("compare files that agree", arrange, act,
             [&](const Fault& fault) { EXPECT_TRUE(same || fault.struck); });
}

}  // namespace
}  // namespace quarn::test
