#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <algorithm>

#include "settings/settings_load_save.h"
#include "settings/settings_record.h"
#include "support/readable_text.h"

namespace quarn {

inline void PrintTo(LoadResult result, std::ostream* out) {
  *out << (result == LoadResult::Loaded ? "loaded" : result == LoadResult::NoFile ? "no file" : "incomplete");
}

/// A folder of its own for each test.
class SettingsFileTest : public testing::Test {
 protected:
  [[nodiscard]] QString Path(const QString& name = QStringLiteral("Quarn.ini")) const {
    return m_folder.filePath(name);
  }

  /// Writes exactly these bytes and returns the path.
  QString WithBytes(const QByteArray& bytes, const QString& name = QStringLiteral("Quarn.ini")) const {
    QFile file(Path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
    return Path(name);
  }

  /// A copy of a file under tests/data/settings, to be changed at will.
  QString WithFixture(const QString& name) const {
    QFile file(QStringLiteral(QUARN_TEST_DATA "/settings/") + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return WithBytes(file.readAll(), name);
  }

  [[nodiscard]] static QByteArray BytesOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
  }

  [[nodiscard]] QStringList FilesInFolder() const {
    return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }

 private:
  QTemporaryDir m_folder;
};

inline constexpr char kBom[] = "\xEF\xBB\xBF";

/// The 29 lines of a fresh file in the order in which they stand on disk.
inline QStringList SortedDefaults() {
  return {QStringLiteral("AUTO_CLR=OFF"),    QStringLiteral("BK_COLOR=NAVY"),
          QStringLiteral("CHK_CMD=id"),      QStringLiteral("COM_BITS=8"),
          QStringLiteral("COM_BPS=9600"),    QStringLiteral("COM_BUF=1K"),
          QStringLiteral("COM_PARITY=None"), QStringLiteral("COM_PORT=NONE"),
          QStringLiteral("COM_STOP=1"),      QStringLiteral("DELIMITER=CR"),
          QStringLiteral("ENBL_NULL=OFF"),   QStringLiteral("FUNC_KEY=ON"),
          QStringLiteral("INPUT_MAX=N"),     QStringLiteral("LINE_NUM=OFF"),
          QStringLiteral("MAIN_POS=TL"),     QStringLiteral("MARK_COLOR=WHITE"),
          QStringLiteral("MEM0=function-1"), QStringLiteral("MEM1=function-2"),
          QStringLiteral("MEM2=function-3"), QStringLiteral("MEM3=function-4"),
          QStringLiteral("MEM4=function-5"), QStringLiteral("MEM5=function-6"),
          QStringLiteral("MEM6=function-7"), QStringLiteral("MEM7=function-8"),
          QStringLiteral("MEM8=function-9"), QStringLiteral("MEM9=function-10"),
          QStringLiteral("PORT_SPEED=HIGH"), QStringLiteral("R_TIMEOUT=ON"),
          QStringLiteral("START_DISP=ON")};
}

/// The bytes of a file in the normalised layout with these entries.
inline QByteArray NormalisedBytes(const QStringList& entries) {
  QByteArray bytes = QByteArray(kBom) + ".VER=Quarn  (Ver. 1.00)\r\n.BEGIN\r\n";
  for (const QString& entry : entries) bytes += entry.toUtf8() + "\r\n";
  return bytes + ".END\r\n";
}

/// A sound file of exactly this many bytes: the default one with stored commands of so many characters, of
/// three bytes each as far as that goes.
inline QByteArray SoundFileOfSize(qsizetype bytes) {
  constexpr qsizetype kLongest = 1018;
  constexpr char kEuro[] = "\xE2\x82\xAC";
  QStringList lines = SortedDefaults();
  const qsizetype first = lines.indexOf(QStringLiteral("MEM0=function-1"));
  for (int key = 0; key < kStoredCommandCount; ++key) lines[first + key] = QStringLiteral("MEM%1=").arg(key);
  qsizetype room = bytes - NormalisedBytes(lines).size();
  for (int key = 0; key < kStoredCommandCount; ++key) {
    const qsizetype euros = std::min(kLongest - 2, room / 3);
    room -= 3 * euros;
    lines[first + key] += QString::fromUtf8(QByteArray(kEuro).repeated(euros));
    if (room > 2) continue;
    lines[first + key] += QString(room, u'x');
    room = 0;
  }
  EXPECT_EQ(room, 0);
  EXPECT_EQ(NormalisedBytes(lines).size(), bytes);
  return NormalisedBytes(lines);
}

}  // namespace quarn
