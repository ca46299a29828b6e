#pragma once

#include <sys/stat.h>

#include <algorithm>

#include "settings/settings_test_support.h"
#include "system/faults/fault_run.h"

namespace quarn::test {

// What a start shows, as RecordedMessages writes it down.

inline QString StartWarning(const char* why, const char* what = "Starting with default settings.") {
  return QStringLiteral("information/: Warning//%1/%2").arg(QLatin1String(why), QLatin1String(what));
}

inline const QString kStartNotFound = StartWarning("Initial settings file not found.");
inline const QString kStartInvalid = StartWarning("Initial file is invalid.");
inline const QString kStartBadPort = StartWarning("Defined port name is invalid.");
inline const QString kStartDifferent =
    StartWarning("Initial file version is different or corrupt.", "Updating configuration settings.");

/// The files before an operation, and those allowed after a fault.
class FaultyFiles : public SettingsFileTest {
 protected:
  [[nodiscard]] std::string Place() const { return QFile::encodeName(Path(QString())).toStdString(); }

  /// Runs an operation with every file error at every call.
  template <class Arrange, class Act, class Check>
  void PlayFaults(const char* name, const Arrange& arrange, const Act& act, const Check& check) {
    FaultRun run(name, Place(), arrange, act, check);
    run.Play(kFileErrors);
    // A disk that fills up while the file is being written.
    FaultPlan byHalves;
    byHalves.byHalves = true;
    run.Play(std::array{ENOSPC}, byHalves);
    run.PlayHeldUp();
    EXPECT_GT(run.PlayWithoutMemory(), 0);
  }

  /// The bytes of a default file with one text replaced.
  [[nodiscard]] static QByteArray DefaultsWith(const QByteArray& before, const QByteArray& after) {
    QByteArray bytes = NormalisedBytes(SortedDefaults());
    EXPECT_TRUE(bytes.contains(before));
    return bytes.replace(before, after);
  }
  [[nodiscard]] static QByteArray WithPort(const QByteArray& port) {
    return DefaultsWith("COM_PORT=NONE", "COM_PORT=" + port);
  }
  /// The bytes at the path; null if there is no file.
  [[nodiscard]] static QByteArray BytesAt(const QString& path) {
    return QFile::exists(path) ? BytesOf(path) : QByteArray();
  }
  /// The file has the old or the new bytes; the new ones without a fault.
  static void ExpectOldOrNew(const Fault& fault, const QString& path, const QByteArray& before,
                             const QByteArray& after) {
    const QByteArray bytes = BytesAt(path);
    EXPECT_TRUE(bytes == after || (fault.struck && bytes == before)) << bytes.constData();
  }
  /// The folder has only these files; a temporary file only if it could not be removed.
  void ExpectFiles(const Fault& fault, QStringList names) const {
    if (fault.call == "unlink") return;
    QStringList found = FilesInFolder();
    found.sort();
    names.sort();
    EXPECT_EQ(found, names);
  }
  void Remove(const QString& name) const {
    QFile::remove(Path(name));
    EXPECT_FALSE(QFile::exists(Path(name)));
  }
  /// Removes what an earlier fault left.
  void Clear() const {
    for (const QString& name : FilesInFolder()) Remove(name);
  }
  static void MakePrivate(const QString& path) { ASSERT_EQ(chmod(QFile::encodeName(path), 0600), 0); }
  static unsigned int ModeOf(const QString& path) {
    struct stat info {};
    EXPECT_EQ(::stat(QFile::encodeName(path), &info), 0);
    return info.st_mode & 07777U;
  }
};

}  // namespace quarn::test
