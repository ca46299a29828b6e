#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include "settings/data_folder.h"

namespace quarn {
namespace {

TEST(DataFolderWin32, StandsInTheApplicationDataAndIsMadeWhenAsked) {
  const QString base = qEnvironmentVariable("APPDATA");
  ASSERT_FALSE(base.isEmpty());
  const QString makers = base + QStringLiteral("\\Halvo");
  QDir(makers).removeRecursively();
  EXPECT_EQ(DataFolder(), makers + QStringLiteral("\\Quarn\\"));
  EXPECT_FALSE(QFileInfo::exists(makers)) << "naming it makes nothing";
  MakeDataFolder(DataFolder());
  EXPECT_TRUE(QFileInfo(makers + QStringLiteral("\\Quarn")).isDir());
  MakeDataFolder(DataFolder());
  EXPECT_EQ(DataFolder(), makers + QStringLiteral("\\Quarn\\")) << "it is there already";
  EXPECT_EQ(WorkingSettingsFile(DataFolder()), makers + QStringLiteral("\\Quarn\\Quarn.ini"));
  QDir(makers).removeRecursively();
}

}  // namespace
}  // namespace quarn
