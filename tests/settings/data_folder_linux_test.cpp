#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "settings/data_folder.h"

namespace quarn {
namespace {

/// Sets HOME and XDG_CONFIG_HOME for one test, and restores them.
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

TEST_F(DataFolderTest, IsOnlyNamedUntilItIsAskedFor) {
  qputenv("XDG_CONFIG_HOME", Home("settings").toLocal8Bit());
  EXPECT_FALSE(DataFolder().isEmpty());
  qunsetenv("XDG_CONFIG_HOME");
  EXPECT_FALSE(DataFolder().isEmpty());
  EXPECT_TRUE(QDir(Home(".")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST_F(DataFolderTest, IsNeverInTheWorkingFolder) {
  qunsetenv("XDG_CONFIG_HOME");
  for (const char* useless : {"", ".", "relative/path", "~"}) {
    qputenv("HOME", useless);
    EXPECT_EQ(DataFolder(), QString()) << useless;
  }
  qunsetenv("HOME");
  EXPECT_EQ(DataFolder(), QString());
  EXPECT_TRUE(WhyNoDataFolder().contains(QStringLiteral("HOME")));
  qputenv("XDG_CONFIG_HOME", Home("settings").toLocal8Bit());
  EXPECT_EQ(DataFolder(), Home("settings/Halvo/Quarn/")) << "what is named outright needs no home";
}

TEST_F(DataFolderTest, IsMadePrivateWithAllAboveItWhateverTheUserGrantsByDefault) {
  qputenv("XDG_CONFIG_HOME", Home("some/settings").toLocal8Bit());
  const mode_t before = ::umask(0);
  MakeDataFolder(DataFolder());
  ::umask(before);
  for (const char* made : {"some", "some/settings", "some/settings/Halvo", "some/settings/Halvo/Quarn"}) {
    EXPECT_EQ(ModeOf(Home(made)), 0700U) << made;
  }
}

TEST_F(DataFolderTest, ThatCannotBeMadeMakesNothing) {
  ASSERT_TRUE(QFile(Home("file")).open(QIODevice::WriteOnly));
  qputenv("XDG_CONFIG_HOME", Home("file/settings").toLocal8Bit());
  MakeDataFolder(DataFolder());
  EXPECT_FALSE(QDir(DataFolder()).exists());
  EXPECT_EQ(QDir(Home(".")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{QStringLiteral("file")});
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
