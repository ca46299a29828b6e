#include <sys/resource.h>

#include "settings/damaged_file.h"
#include "settings/user_file_test.h"
#include "settings/working_file.h"

namespace quarn::test {
namespace {

constexpr qint64 kGigabyte = qint64{1} << 30;

long MostMemoryKilobytes() {
  rusage usage{};
  EXPECT_EQ(getrusage(RUSAGE_SELF, &usage), 0);
  return usage.ru_maxrss;
}

/// Files that need no space on the disk and more memory than exists. Every operation stops reading when it
/// knows that the file is too large.
class HugeFile : public UserFile, public testing::WithParamInterface<qint64> {
 protected:
  void TearDown() override { EXPECT_LT(MostMemoryKilobytes() - m_before, 64 * 1024); }
  /// The text of a valid file, followed by zeros.
  QString Huge(const QString& name) const {
    QString path = WithEntry("COM_PORT=NONE", "COM_PORT=COM3", name);
    QFile file(path);
    EXPECT_TRUE(file.resize(GetParam() * kGigabyte)) << file.errorString().toStdString();
    return path;
  }

 private:
  const long m_before = MostMemoryKilobytes();
};

TEST_P(HugeFile, IsNoUserFile) {
  ExpectRefused(Huge(QStringLiteral("user.qrn")), {kFileInvalid});
  EXPECT_FALSE(CopySettingsFile(Path(QStringLiteral("user.qrn")), working));
}

TEST_P(HugeFile, IsNoSettingsFile) {
  const QString path = Huge(QStringLiteral("huge"));
  QStringList entries;
  SettingsRecord loaded;
  EXPECT_EQ(ReadWholeBytes(path), std::nullopt);
  EXPECT_EQ(ReadWholeText(path)->size(), 16383);
  EXPECT_EQ(ReadValue(path, keys::kComPort), std::nullopt);
  EXPECT_FALSE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(LoadSettings(path, loaded), LoadResult::Incomplete);
  EXPECT_FALSE(HoldSameSettings(path, working));
  EXPECT_EQ(CompareWithDefaults(path).result, KeySetResult::Invalid);
  EXPECT_EQ(QFileInfo(path).size(), GetParam() * kGigabyte);
}

TEST_P(HugeFile, AtTheStartIsKeptBeside) {
  Huge(QStringLiteral("Quarn.ini"));
  PrepareWorkingFile(Path(QString()) + QLatin1Char('/'));
  EXPECT_FALSE(QFile::exists(working));
  EXPECT_EQ(QFileInfo(DamagedFileOf(working)).size(), GetParam() * kGigabyte);
  Huge(QStringLiteral("Quarn.ini"));
  LoadInitialSettings(working, record, messages);
  EXPECT_EQ(BytesOf(working), NormalisedBytes(SortedDefaults()));
  EXPECT_EQ(QFileInfo(DamagedFileOf(working)).size(), GetParam() * kGigabyte);
}

TEST_P(HugeFile, AtAStartByAUserFileIsKeptBeside) {
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM3");
  Huge(QStringLiteral("Quarn.ini"));
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, QStringList{kOpened});
  EXPECT_EQ(BytesOf(working), BytesOf(user));
  EXPECT_EQ(QFileInfo(DamagedFileOf(working)).size(), GetParam() * kGigabyte);
}

INSTANTIATE_TEST_SUITE_P(Gigabytes, HugeFile, testing::Values(3, 60));

TEST(EndlessFile, IsNoFileAtAll) {
  for (const char* device : {"/dev/zero", "/dev/urandom", "/dev/tty"}) {
    const QString path = QString::fromLatin1(device);
    EXPECT_EQ(ClassifyPath(path), PathKind::Nothing) << device;
    EXPECT_EQ(ReadWholeBytes(path), std::nullopt);
    EXPECT_EQ(ReadWholeText(path), std::nullopt);
    EXPECT_EQ(CompareWithDefaults(path).result, KeySetResult::NoFile);
  }
}

}  // namespace
}  // namespace quarn::test
