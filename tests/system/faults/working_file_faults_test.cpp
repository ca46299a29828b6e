#include "settings/working_file.h"

#include "settings/damaged_file.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/user_file_test.h"
#include "system/faults/faulty_files.h"

namespace quarn::test {
namespace {

class WorkingFileFaults : public FaultyFiles {
 protected:
  /// The start with this file (null: none). Without a fault it shows `shown` and leaves `after`. A fault may
  /// at most lead to the defaults, with a message; then a copy of the file is kept.
  void PlayStart(const char* name, const QByteArray& before, const QStringList& shown,
                 const QByteArray& after) {
    PlayFaults(
        name,
        [&] {
          Clear();
          if (!before.isNull()) WithBytes(before);
          record = {};
          messages.shown.clear();
        },
        [&] { LoadInitialSettings(working, record, messages); },
        [&](const Fault& fault) {
          EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
          const QByteArray bytes = BytesAt(working);
          const QByteArray kept = BytesAt(damaged);
          QStringList files;
          if (!bytes.isNull()) files.append(QStringLiteral("Quarn.ini"));
          if (!kept.isNull()) files.append(QStringLiteral("Quarn.ini.damaged"));
          ExpectFiles(fault, files);
          // Unchanged, or already updated.
          const bool isKept = !kept.isNull() && (kept == before || (kept == after && after != defaults));
          EXPECT_TRUE(kept.isNull() || isKept) << kept.constData();
          EXPECT_TRUE(bytes != defaults || before.isNull() || isKept) << "lost: " << before.constData();
          if (!fault.struck || messages.shown == shown) {
            EXPECT_EQ(messages.shown, shown);
            ExpectOldOrNew(fault, working, before, after);
            EXPECT_EQ(record.comPort, PortIn(after));
          } else {
            ExpectDefaultsWereTold(before, shown);
          }
        });
  }
  static QString PortIn(const QByteArray& bytes) {
    return bytes.contains("COM_PORT=COM7") ? QStringLiteral("COM7") : QStringLiteral("NONE");
  }
  /// There was one more message than without the fault: that the defaults are used.
  void ExpectDefaultsWereTold(const QByteArray& before, const QStringList& shown) const {
    ASSERT_FALSE(messages.shown.isEmpty());
    const QStringList mayEndWith{kStartNotFound, kStartInvalid, kStartBadPort};
    EXPECT_TRUE(mayEndWith.contains(messages.shown.last())) << messages.shown.last().toStdString();
    for (const QString& text : messages.shown.mid(0, messages.shown.size() - 1)) {
      EXPECT_TRUE(shown.contains(text)) << text.toStdString();
    }
    EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
    const QByteArray bytes = BytesAt(working);
    EXPECT_TRUE(bytes == defaults || bytes == before) << bytes.constData();
  }

  const QString working = Path();
  const QString damaged = DamagedFileOf(working);
  const QByteArray defaults = NormalisedBytes(SortedDefaults());
  SettingsRecord record;
  RecordedMessages messages;
};

TEST_F(WorkingFileFaults, StartingWithAGoodFile) {
  PlayStart("load at the start", WithPort("COM7"), {}, WithPort("COM7"));
}

TEST_F(WorkingFileFaults, StartingWithoutAFile) {
  PlayStart("start without a file", QByteArray(), {kStartNotFound}, defaults);
}

TEST_F(WorkingFileFaults, StartingWithABrokenFile) {
  PlayStart("start with a broken file", "no settings", {kStartInvalid}, defaults);
}

TEST_F(WorkingFileFaults, StartingWithABadPort) {
  PlayStart("start with a bad port", WithPort("COM100"), {kStartBadPort}, defaults);
}

TEST_F(WorkingFileFaults, StartingWithAFileOfAnotherVersion) {
  // An update that failed is made at the next start: no key without which the file would not load.
  PlayStart("bring the file up to date at the start",
            WithPort("COM7").replace("MARK_COLOR=WHITE", "OLD_KEY=1"), {kStartDifferent}, WithPort("COM7"));
}

TEST_F(WorkingFileFaults, PreparingTheWorkingFile) {
  const QString folder = Path(QStringLiteral("Quarn/"));
  const QString inFolder = folder + QStringLiteral("Quarn.ini");
  PlayFaults(
      "make the settings folder", [&] { QDir(folder).removeRecursively(); },
      [&] { PrepareWorkingFile(folder); },
      [&](const Fault& fault) { EXPECT_EQ(QDir(folder).exists(), fault.call != "mkdir"); });
  for (const QByteArray& abandoned : {QByteArray("STARTUP_STATE and more"), QByteArray(16385, 'x')}) {
    PlayFaults(
        "remove an abandoned file", [&] { WithBytes(abandoned, QStringLiteral("Quarn/Quarn.ini")); },
        [&] { PrepareWorkingFile(folder); },
        [&](const Fault& fault) {
          ExpectOldOrNew(fault, inFolder, abandoned, QByteArray());
          if (BytesAt(inFolder).isNull()) {
            EXPECT_EQ(BytesAt(DamagedFileOf(inFolder)), abandoned);
          }
        });
  }
  // No fault may lead to a good file being given up.
  PlayFaults(
      "keep a good file", [&] { WithBytes(WithPort("COM7"), QStringLiteral("Quarn/Quarn.ini")); },
      [&] { PrepareWorkingFile(folder); },
      [&](const Fault&) { EXPECT_EQ(BytesAt(inFolder), WithPort("COM7")); });
}

class UserFileFaults : public FaultyFiles {
 protected:
  void PlayOpen(const char* name, const QByteArray& user) {
    PlayFaults(
        name,
        [&] {
          Clear();
          WithBytes(WithPort("COM7"));
          WithBytes(user, QStringLiteral("user.qrn"));
          EXPECT_EQ(LoadSettings(working, record), LoadResult::Loaded);
          before = record;
          messages.shown.clear();
          messages.answers = {true};
        },
        [&] { opened = OpenUserFile(userFile, working, record, messages); },
        [&](const Fault& fault) {
          ExpectFiles(fault, {QStringLiteral("Quarn.ini"), QStringLiteral("user.qrn")});
          if (opened.isEmpty()) {
            ExpectRefused(fault, user);
          } else {
            ExpectLoaded(user);
          }
          m_check(fault);
        });
  }
  void ExpectLoaded(const QByteArray& user) const {
    EXPECT_EQ(BytesAt(working), WithPort("COM3"));
    EXPECT_EQ(record.comPort, QStringLiteral("COM3"));
    // A file that could not be written was updated in the working copy, without a message.
    const bool updated = messages.shown.contains(kUpdated);
    EXPECT_EQ(BytesAt(userFile), updated ? WithPort("COM3") : user);
    QStringList shown;
    if (user != WithPort("COM3")) shown.append(kMayUpdate);
    if (updated) shown.append(kUpdated);
    EXPECT_EQ(messages.shown, shown + QStringList{kOpened});
  }
  /// Nothing has changed, except a reported update, and one message says why.
  void ExpectRefused(const Fault& fault, const QByteArray& user) const {
    EXPECT_EQ(record, before);
    const bool updated = messages.shown.contains(kUpdated);
    EXPECT_EQ(BytesAt(userFile), updated ? WithPort("COM3") : user);
    ASSERT_FALSE(messages.shown.isEmpty());
    const QString last = messages.shown.last();
    EXPECT_TRUE((QStringList{kFileNotFound, kFileInvalid, kNotOpened, kNotLoaded}).contains(last))
        << last.toStdString();
    for (const QString& text : messages.shown.mid(0, messages.shown.size() - 1)) {
      EXPECT_TRUE(text == kMayUpdate || text == kUpdated) << text.toStdString();
    }
    const QByteArray bytes = BytesAt(working);
    // Restoring the old text is a write too.
    const bool notPutBack = fault.struck && last == kNotLoaded && bytes == BytesAt(userFile);
    EXPECT_TRUE(bytes == WithPort("COM7") || notPutBack) << bytes.constData();
  }

  const QString working = Path();
  const QString userFile = Path(QStringLiteral("user.qrn"));
  SettingsRecord record;
  SettingsRecord before;
  RecordedMessages messages;
  QString opened;
  std::function<void(const Fault&)> m_check = [](const Fault&) {};
};

TEST_F(UserFileFaults, OpeningAGoodFile) {
  m_check = [this](const Fault& fault) {
    EXPECT_TRUE(fault.struck || !opened.isEmpty());
    // The only fault came before the old text was restored.
    EXPECT_EQ(BytesAt(working), WithPort(opened.isEmpty() ? "COM7" : "COM3"));
  };
  PlayOpen("open a user file", WithPort("COM3"));
}

TEST_F(UserFileFaults, OpeningAFileOfAnotherVersion) {
  m_check = [this](const Fault& fault) {
    EXPECT_TRUE(fault.struck || (!opened.isEmpty() && messages.shown.contains(kUpdated)));
    EXPECT_EQ(BytesAt(working), WithPort(opened.isEmpty() ? "COM7" : "COM3"));
  };
  PlayOpen("bring a user file up to date and open it",
           WithPort("COM3").replace("MARK_COLOR=WHITE", "OLD_KEY=1"));
}

TEST_F(UserFileFaults, OpeningAFileThatIsRejected) {
  m_check = [this](const Fault& fault) {
    EXPECT_EQ(opened, QString());
    EXPECT_TRUE(fault.struck || BytesAt(working) == WithPort("COM7"));
  };
  PlayOpen("open a user file with a bad port", WithPort("COM100"));
}

}  // namespace
}  // namespace quarn::test
