#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "settings/data_folder.h"

namespace quarn {
namespace {

/// HOME and XDG_CONFIG_HOME for one test, put back afterwards.
class DataFolderTest : public ::testing::Test {
 protected:
  DataFolderTest() { qputenv("HOME", m_home.path().toLocal8Bit()); }
  ~DataFolderTest() override {
    Restore("HOME", m_formerHome);
    Restore("XDG_CONFIG_HOME", m_formerConfig);
  }
  [[nodiscard]] QString Home(const char* below) const { return m_home.filePath(QLatin1String(below)); }
  static mode_t ModeOf(const QString& path) {
    struct stat info {};
    EXPECT_EQ(stat(QFile::encodeName(path).constData(), &info), 0) << path.toStdString();
    return info.st_mode & 07777U;
  }

 private:
  static void Restore(const char* name, const QByteArray& value) {
    if (value.isNull()) {
      qunsetenv(name);
    } else {
      qputenv(name, value);
    }
  }
  QTemporaryDir m_home;
  QByteArray m_formerHome = qgetenv("HOME");
  QByteArray m_formerConfig = qgetenv("XDG_CONFIG_HOME");
};

TEST_F(DataFolderTest, StandsInTheConfigurationFolder) {
  qputenv("XDG_CONFIG_HOME", Home("settings").toLocal8Bit());
  EXPECT_EQ(DataFolder(), Home("settings/Halvo/Quarn/"));
  EXPECT_EQ(WorkingSettingsFile(DataFolder()), Home("settings/Halvo/Quarn/Quarn.ini"));
  EXPECT_EQ(PortsFolder(DataFolder()), Home("settings/Halvo/Quarn/ports"));
}

TEST_F(DataFolderTest, StandsInTheHomeFolderOtherwise) {
  for (const char* useless : {static_cast<const char*>(nullptr), "", "relative/path"}) {
    if (useless == nullptr) {
      qunsetenv("XDG_CONFIG_HOME");
    } else {
      qputenv("XDG_CONFIG_HOME", useless);
    }
    EXPECT_EQ(DataFolder(), Home(".config/Halvo/Quarn/"));
  }
}

TEST_F(DataFolderTest, MakesTheMakersFolderPrivateAndLeavesTheLastOne) {
  qputenv("XDG_CONFIG_HOME", Home("settings").toLocal8Bit());
  const QString folder = DataFolder();
  EXPECT_EQ(ModeOf(Home("settings/Halvo")), 0700U);
  EXPECT_FALSE(QDir(folder).exists());
}

TEST_F(DataFolderTest, IsMadePrivateWhateverTheUserGrantsByDefault) {
  qputenv("XDG_CONFIG_HOME", Home("settings").toLocal8Bit());
  const mode_t before = ::umask(0);
  MakeDataFolder(DataFolder());
  ::umask(before);
  EXPECT_EQ(ModeOf(Home("settings/Halvo")), 0700U);
  EXPECT_EQ(ModeOf(Home("settings/Halvo/Quarn")), 0700U);
}

TEST_F(DataFolderTest, StaysAsItsUserHasSetIt) {
  qputenv("XDG_CONFIG_HOME", Home("settings").toLocal8Bit());
  MakeDataFolder(DataFolder());
  ASSERT_EQ(::chmod(QFile::encodeName(Home("settings/Halvo/Quarn")).constData(), 0750), 0);
  MakeDataFolder(DataFolder());
  EXPECT_EQ(ModeOf(Home("settings/Halvo/Quarn")), 0750U);
}

}  // namespace
}  // namespace quarn
