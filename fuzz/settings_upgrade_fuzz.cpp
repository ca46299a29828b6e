#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "base/bounds.h"
#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/working_file.h"

// The input is a settings file of any version. Its keys are compared with those of the program, and it is
// updated. Then it has no unknown key and all its known entries, and can be read; or it is unchanged.
namespace quarn {
namespace {

struct BoundsError {};

void Require(bool holds) {
  if (!holds) std::abort();
}

/// One file of this process, in memory if the system has a place for that.
class OneFile {
 public:
  OneFile() : m_folder(Place() + QStringLiteral("/quarn-fuzz-XXXXXX")) {}
  [[nodiscard]] QString Path() const { return m_folder.filePath(QStringLiteral("user.qrn")); }
  void Put(const char* bytes, qint64 size) const {
    QFile file(Path());
    Require(file.open(QIODevice::WriteOnly) && file.write(bytes, size) == size);
  }
  /// The folder contains only this file.
  [[nodiscard]] qsizetype Count() const {
    return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size();
  }

 private:
  static QString Place() {
    return ::access("/dev/shm", W_OK) == 0 ? QStringLiteral("/dev/shm") : QDir::tempPath();
  }
  QTemporaryDir m_folder;
};

QStringList Entries(const QString& path) {
  QStringList entries;
  ListEntries(path, entries);
  return entries;
}

/// The entries that an update must keep: the known ones, unless the removal of an unknown one removes them.
QStringList KeptOf(const QStringList& entries, const KeySetComparison& comparison) {
  QStringList kept;
  for (const QString& entry : entries) {
    const bool taken =
        std::any_of(comparison.unknownKeys.begin(), comparison.unknownKeys.end(),
                    [&](const QString& key) { return !key.isEmpty() && entry.startsWith(key); });
    if (!taken && FindSetting(SettingsKey(KeyPart(entry).toString())) != nullptr) kept.append(entry);
  }
  return kept;
}

void CheckUpgrade(const QString& path) {
  const KeySetComparison before = CompareWithDefaults(path);
  Require(before.result != KeySetResult::NoFile);
  if (before.result != KeySetResult::Different) return;
  const QStringList kept = KeptOf(Entries(path), before);
  const std::optional<QByteArray> bytes = ReadWholeBytes(path);
  if (!UpgradeFile(path, before)) {
    Require(ReadWholeBytes(path) == bytes);
    return;
  }
  const KeySetComparison after = CompareWithDefaults(path);
  Require(after.result != KeySetResult::Invalid && after.unknownKeys.isEmpty());
  const QStringList entries = Entries(path);
  for (const QString& entry : kept) Require(entries.count(entry) >= kept.count(entry));
}

}  // namespace
}  // namespace quarn

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const quarn::OneFile file;
  static const bool prepared = [] {
    // Otherwise each file that cannot be read would be logged.
    QLoggingCategory::setFilterRules(QStringLiteral("quarn.settings.debug=false"));
    quarn::SetBoundsErrorHandler([](const quarn::PassedLimit&) { throw quarn::BoundsError{}; });
    return true;
  }();
  if (!prepared) return 0;
  file.Put(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
  try {
    quarn::CheckUpgrade(file.Path());
  } catch (const quarn::BoundsError&) {
    // A fatal limit is a correct end.
  }
  quarn::Require(file.Count() == 1);
  return 0;
}
