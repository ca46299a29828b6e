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
#include "system/faults/disk_journal.h"
#include "system/faults/faulty_files.h"
#include "terminal/function_key_table.h"

namespace quarn::test {
namespace {

bool IsTemporary(const std::string& name) {
  const QFileInfo info(QString::fromStdString(name));
  return info.suffix().size() == 6 && info.completeBaseName().contains(u'.');
}

class PowerLoss : public FaultyFiles {
 protected:
  using Check = std::function<void(const DiskState&)>;

  /// Runs an operation once, and checks every disk that it can leave.
  template <class Act>
  int Play(const char* name, const Act& act, const Check& check) {
    DiskJournal journal(Place());
    {
      CallFaults calls(Place(), {});
      calls.NoteIn(journal);
      act();
    }
    int different = 0;
    const int states = journal.ForEachState([&](const DiskState& state) {
      ++different;
      if (HasFailure()) return;
      ExpectWhole(journal, state);
      check(state);
    });
    std::cout << "power loss: " << name << ": " << states << " states, " << different << " different\n";
    EXPECT_GT(states, 1) << name << " does nothing that a power loss could spoil";
    return states;
  }
  /// As above, with a file that loads before and after: the next start takes the disk without a word.
  template <class Act>
  int PlaySound(const char* name, const Act& act) {
    return Play(name, act, [this](const DiskState& state) {
      const SettingsRecord loaded = Start(state);
      EXPECT_EQ(m_messages.shown, QStringList());
      EXPECT_EQ(loaded.loadedMarker, QStringLiteral("TRUE"));
    });
  }

  /// A start of the program with this disk.
  SettingsRecord Start(const DiskState& state) {
    const QTemporaryDir folder;
    for (const auto& [name, content] : state) {
      QFile file(folder.filePath(QString::fromStdString(name)));
      EXPECT_TRUE(file.open(QIODevice::WriteOnly));
      EXPECT_EQ(file.write(content.data(), static_cast<qint64>(content.size())),
                static_cast<qint64>(content.size()));
    }
    SettingsRecord record;
    m_messages.shown.clear();
    LoadInitialSettings(folder.filePath(QStringLiteral("Quarn.ini")), record, m_messages);
    return record;
  }
  /// Some file has exactly these bytes.
  static bool Keeps(const DiskState& state, const QByteArray& bytes) {
    return std::any_of(state.begin(), state.end(), [&](const auto& file) {
      return !IsTemporary(file.first) && file.second == bytes.toStdString();
    });
  }

  const QString working = Path();
  const QString user = Path(QStringLiteral("user.qrn"));
  RecordedMessages m_messages;

 private:
  static void ExpectWhole(const DiskJournal& journal, const DiskState& state) {
    std::set<std::string> names{"Quarn.ini", "user.qrn", "Quarn.ini.damaged"};
    for (const auto& [name, content] : state) {
      if (!IsTemporary(name)) names.insert(name);
    }
    for (const std::string& name : names) {
      const auto found = state.find(name);
      if (found == state.end()) {
        EXPECT_TRUE(journal.WasAbsent(name)) << name << " is gone";
      } else {
        EXPECT_TRUE(journal.Versions(name).contains(found->second))
            << name << " has " << found->second.size() << " bytes: " << found->second;
      }
    }
  }
};

TEST_F(PowerLoss, AnOption) {
  WithBytes(WithPort("COM7"));
  EXPECT_GE(PlaySound("an option", [this] { UpdateValue(working, keys::kComBps, QStringLiteral("19200")); }),
            8);
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
        EXPECT_EQ(m_messages.shown.isEmpty(), state.contains("Quarn.ini"));
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
  const int states = PlaySound("five operations", [&] {
    UpdateValue(working, keys::kComBps, QStringLiteral("19200"));
    EXPECT_TRUE(CopySettingsFile(working, user));
    UpdateValue(working, keys::kComBits, QStringLiteral("7"));
    EXPECT_FALSE(OpenUserFile(user, working, record, m_messages).isEmpty());
    EXPECT_TRUE(CopySettingsFile(working, user));
  });
  EXPECT_GE(states, 1000);
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
  EXPECT_EQ(ContentsAfter(write(false)), (std::set<std::string>{"before", "", "after", "afterwards"}));
  EXPECT_EQ(ContentsAfter(write(true)), (std::set<std::string>{"before", "afterwards"}));
}

}  // namespace
}  // namespace quarn::test
