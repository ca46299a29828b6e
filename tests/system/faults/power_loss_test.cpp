// The computer loses its power while settings are written. The calls of an operation are noted, and every
// disk is made that they can leave: disk_journal.h says which. Each must have whole files, which the next
// start takes.

#include <fcntl.h>
#include <unistd.h>

#include "settings/damaged_file.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/user_file.h"
#include "settings/user_file_test.h"
#include "settings/working_file.h"
#include "system/faults/faulty_files.h"
#include "system/faults/power_loss.h"
#include "terminal/function_key_table.h"

namespace quarn::test {
namespace {

class PowerLoss : public FaultyFiles {
 protected:
  template <class Act, class Check>
  int Play(const char* name, const Act& act, const Check& check) {
    return m_losses.Play(name, act, check);
  }
  template <class Act>
  int PlaySound(const char* name, const Act& act) {
    return m_losses.PlaySound(name, act);
  }
  SettingsRecord Start(const DiskState& state) { return m_losses.Start(state); }
  /// Some file has exactly these bytes.
  static bool Keeps(const DiskState& state, const QByteArray& bytes) {
    return std::any_of(state.begin(), state.end(), [&](const auto& file) {
      return !IsTemporaryName(file.first) && file.second == bytes.toStdString();
    });
  }

  const QString working = Path();
  const QString user = Path(QStringLiteral("user.qrn"));
  PowerLosses m_losses{Path(QString())};
  RecordedMessages m_messages;
};

TEST_F(PowerLoss, AnOption) {
  WithBytes(WithPort("COM7"));
  const auto act = [this] { UpdateValue(working, keys::kComBps, QStringLiteral("19200")); };
  EXPECT_EQ(PlaySound("an option", act), 3)
      << "the old file, the new one, and the old one beside the new one";
}

TEST_F(PowerLoss, AllSettings) {
  WithBytes(WithPort("COM7"));
  SettingsRecord record = DefaultSettings();
  record.comPort = QStringLiteral("COM3");
  PlaySound("all settings", [&] { SaveAllSettings(working, record); });
}

TEST_F(PowerLoss, TheStoredCommands) {
  WithBytes(WithPort("COM7"));
  SettingsRecord record = DefaultSettings();
  FunctionKeyTable table(record);
  for (int i = 0; i < kStoredCommandCount; ++i) table.SetEditText(i, QStringLiteral("stored"));
  PlaySound("the stored commands", [&] { EXPECT_TRUE(table.Save(working)); });
}

TEST_F(PowerLoss, AKeyAddedAndOneRemoved) {
  WithBytes(WithPort("COM7"));
  Play(
      "remove and add a key",
      [this] {
        EXPECT_TRUE(RemoveKey(working, keys::kMarkColor));
        EXPECT_TRUE(AddKeyLine(working, QStringLiteral("MARK_COLOR=BLACK")));
      },
      [this](const DiskState& state) { EXPECT_EQ(Start(state).comPort, QStringLiteral("COM7")); });
}

TEST_F(PowerLoss, TheDefaultsWhereThereIsNoFile) {
  Play(
      "the defaults", [this] { EXPECT_TRUE(WriteDefaultFile(working)); },
      [this](const DiskState& state) {
        Start(state);
        EXPECT_EQ(m_losses.Shown().isEmpty(), state.contains("Quarn.ini"));
      });
}

TEST_F(PowerLoss, AUserFileThatIsSavedAndOpened) {
  WithBytes(WithPort("COM7"));
  WithBytes(WithPort("COM3"), QStringLiteral("user.qrn"));
  SettingsRecord record;
  PlaySound("save a user file and open it", [&] {
    EXPECT_TRUE(CopySettingsFile(working, user));
    EXPECT_TRUE(UpdateValue(working, keys::kComPort, QStringLiteral("COM1")));
    EXPECT_FALSE(OpenUserFile(user, working, record, m_messages).isEmpty());
  });
}

TEST_F(PowerLoss, AUserFileOfAnotherVersion) {
  WithBytes(WithPort("COM7"));
  const QByteArray old = WithPort("COM3").replace("MARK_COLOR=WHITE", "OLD_KEY=1");
  WithBytes(old, QStringLiteral("user.qrn"));
  m_messages.answers = {true};
  SettingsRecord record;
  PlaySound("bring a user file up to date",
            [&] { EXPECT_FALSE(OpenUserFile(user, working, record, m_messages).isEmpty()); });
}

TEST_F(PowerLoss, AUserFileThatIsRejected) {
  WithBytes(WithPort("COM7"));
  WithBytes(WithPort("COM100"), QStringLiteral("user.qrn"));
  SettingsRecord record;
  // Its text is in the working file until the former text is put back.
  Play(
      "a user file with a bad port",
      [&] { EXPECT_TRUE(OpenUserFile(user, working, record, m_messages).isEmpty()); },
      [this](const DiskState& state) { EXPECT_FALSE(Start(state).comPort.isEmpty()); });
}

TEST_F(PowerLoss, AStartWithAFileOfAnotherVersion) {
  WithBytes(WithPort("COM7").replace("MARK_COLOR=WHITE", "OLD_KEY=1"));
  SettingsRecord record;
  Play(
      "a start with a file of another version", [&] { LoadInitialSettings(working, record, m_messages); },
      [this](const DiskState& state) { EXPECT_EQ(Start(state).comPort, QStringLiteral("COM7")); });
}

/// What is replaced by the defaults is kept, in its own file or in the copy, whatever reaches the disk first.
TEST_F(PowerLoss, ADamagedFileIsKept) {
  const QByteArray damaged = "no settings";
  WithBytes(damaged);
  SettingsRecord record;
  Play(
      "a start with a damaged file", [&] { LoadInitialSettings(working, record, m_messages); },
      [&](const DiskState& state) { EXPECT_TRUE(Keeps(state, damaged)) << "it is lost"; });
}

TEST_F(PowerLoss, AFileWithABadPortIsKept) {
  const QByteArray bad = WithPort("COM100");
  WithBytes(bad);
  SettingsRecord record;
  Play(
      "a start with a bad port", [&] { LoadInitialSettings(working, record, m_messages); },
      [&](const DiskState& state) {
        EXPECT_TRUE(Keeps(state, bad)) << "it is lost";
        EXPECT_EQ(Start(state).comPort, QStringLiteral("NONE"));
        const bool replaced = state.at("Quarn.ini") != bad.toStdString();
        EXPECT_EQ(m_losses.Shown(), replaced ? QStringList() : QStringList{kStartBadPort});
      });
}

TEST_F(PowerLoss, AFileThatIsTooLargeIsKept) {
  const QByteArray large(kMaxFileBytes + 1, 'x');
  WithBytes(large);
  SettingsRecord record;
  Play(
      "a start with a file that is too large",
      [&] {
        PrepareWorkingFile(Path(QString()) + u'/');
        LoadInitialSettings(working, record, m_messages);
      },
      [&](const DiskState& state) { EXPECT_TRUE(Keeps(state, large)) << "it is lost"; });
}

/// A morning's work: nothing flushes the folder in between, so that any version of each file may come back.
TEST_F(PowerLoss, OneOperationAfterTheOther) {
  WithBytes(WithPort("COM7"));
  WithBytes(WithPort("COM3"), QStringLiteral("user.qrn"));
  SettingsRecord record;
  const int different = PlaySound("five operations", [&] {
    UpdateValue(working, keys::kComBps, QStringLiteral("19200"));
    EXPECT_TRUE(CopySettingsFile(working, user));
    UpdateValue(working, keys::kComBits, QStringLiteral("7"));
    EXPECT_FALSE(OpenUserFile(user, working, record, m_messages).isEmpty());
    EXPECT_TRUE(CopySettingsFile(working, user));
  });
  EXPECT_EQ(different, 126);
}

/// The system may take a file in many pieces. The flush comes after the last one.
TEST_F(PowerLoss, AFileThatIsWrittenInPieces) {
  const auto play = [this](const char* name, const FaultPlan& plan) {
    WithBytes(WithPort("COM7"));
    WithBytes(WithPort("COM3"), QStringLiteral("user.qrn"));
    const auto act = [this] {
      UpdateValue(working, keys::kComBps, QStringLiteral("19200"));
      EXPECT_TRUE(CopySettingsFile(working, user));
    };
    return m_losses.PlaySound(name, act, plan);
  };
  FaultPlan inPieces;
  inPieces.byHalves = true;
  EXPECT_EQ(play("two operations in pieces", inPieces), play("the same in one piece each", {}));
}

/// That a file written in place, and one renamed without a flush, would be noticed.
class UnsafeWrites : public FaultyFiles {
 protected:
  template <class Act>
  std::set<std::string> ContentsAfter(const Act& act) {
    WithBytes("before");
    DiskJournal journal(Place());
    {
      CallFaults calls(Place(), {});
      calls.NoteIn(journal);
      act(QFile::encodeName(Path()).toStdString());
    }
    std::set<std::string> contents;
    journal.ForEachState([&](const DiskState& state) {
      const auto found = state.find("Quarn.ini");
      contents.insert(found == state.end() ? "no file" : found->second);
    });
    EXPECT_EQ(journal.Versions("Quarn.ini"), (std::set<std::string>{"before", "afterwards"}));
    EXPECT_FALSE(journal.WasAbsent("Quarn.ini"));
    return contents;
  }
  static void Write(const std::string& path, bool flushes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    EXPECT_EQ(::write(file, "afterwards", 10), 10);
    EXPECT_TRUE(!flushes || ::fsync(file) == 0);
    ::close(file);
  }
};

/// The second half alone: a disk writes in its own order.
std::string OnlySecond() { return std::string(5, '\0') + "wards"; }

TEST_F(UnsafeWrites, InPlaceLeaveHalfAFile) {
  const auto contents = ContentsAfter([](const std::string& path) { Write(path, true); });
  EXPECT_TRUE(contents.contains(""));
  EXPECT_TRUE(contents.contains("afterwards"));
}

TEST_F(UnsafeWrites, WithoutAFlushLeaveAnEmptyFile) {
  const auto write = [](bool flushes) {
    return [flushes](const std::string& path) {
      Write(path + ".new", flushes);
      EXPECT_EQ(::rename((path + ".new").c_str(), path.c_str()), 0);
    };
  };
  EXPECT_EQ(ContentsAfter(write(false)),
            (std::set<std::string>{"before", "", "after", OnlySecond(), "afterwards"}));
  EXPECT_EQ(ContentsAfter(write(true)), (std::set<std::string>{"before", "afterwards"}));
}

TEST_F(UnsafeWrites, ManyWithoutAFlushLeaveAnyOfThem) {
  const auto contents = ContentsAfter([](const std::string& path) {
    const std::string added = path + ".new";
    const int file = ::open(added.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    for (const char byte : std::string("afterwards")) EXPECT_EQ(::write(file, &byte, 1), 1);
    ::close(file);
    EXPECT_EQ(::rename(added.c_str(), path.c_str()), 0);
  });
  const auto only = [](std::initializer_list<std::size_t> written) {
    std::string content;
    for (const std::size_t at : written) {
      content.resize(at);
      content.push_back("afterwards"[at]);
    }
    return content;
  };
  EXPECT_TRUE(contents.contains(only({0, 1, 2, 3})));
  EXPECT_TRUE(contents.contains(only({5, 6, 7, 8, 9})));
  EXPECT_TRUE(contents.contains(only({4})));
  EXPECT_TRUE(contents.contains(only({0, 1, 2, 3, 4, 5, 6, 8, 9})));
  EXPECT_TRUE(contents.contains(only({1, 3, 5, 7, 9})));
}

}  // namespace
}  // namespace quarn::test
