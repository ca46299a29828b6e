#include "demo/demo_folder.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <array>
#include <memory>

#include "demo/demo_ports.h"
#include "settings/data_folder.h"
#include "settings/settings_load_save.h"

namespace quarn {
namespace {

TEST(DemoFolder, HasSettingsThatNameTheDemosPort) {
  const DemoFolder folder;
  ASSERT_FALSE(folder.Path().isEmpty()) << folder.WhyNot().toStdString();
  EXPECT_TRUE(folder.Path().endsWith(u'/'));
  SettingsRecord settings;
  ASSERT_EQ(LoadSettings(WorkingSettingsFile(folder.Path()), settings), LoadResult::Loaded);
  EXPECT_EQ(settings.comPort, QLatin1String(kDemoPort));
  EXPECT_EQ(settings.mem[0], QStringLiteral("id"));
}

TEST(DemoFolder, CanBeWrittenToAndGoesWithItsObject) {
  auto folder = std::make_unique<DemoFolder>();
  const QString path = folder->Path();
  QFile file(WorkingSettingsFile(path));
  EXPECT_TRUE(file.open(QIODevice::Append));
  EXPECT_NE(DemoFolder().Path(), path) << "each demo has its own";
  file.close();
  folder.reset();
  EXPECT_FALSE(QDir(path).exists());
}

/// The system's folder for temporary files, while the object lives.
class TemporaryFilesIn {
 public:
  explicit TemporaryFilesIn(const QByteArray& folder) {
    for (const char* name : kNames) {
      m_former.append(qgetenv(name));
      qputenv(name, folder);
    }
  }
  ~TemporaryFilesIn() {
    for (const char* name : kNames) {
      const QByteArray former = m_former.takeFirst();
      former.isEmpty() ? qunsetenv(name) : qputenv(name, former);
    }
  }
  TemporaryFilesIn(const TemporaryFilesIn&) = delete;
  TemporaryFilesIn& operator=(const TemporaryFilesIn&) = delete;

 private:
  static constexpr std::array kNames{"TMPDIR", "TMP", "TEMP"};
  QByteArrayList m_former;
};

TEST(DemoFolder, WithoutOneThereIsAReason) {
  const TemporaryFilesIn nowhere(QDir::tempPath().toLocal8Bit() + "/quarn/is/not/here");
  const DemoFolder folder;
  EXPECT_EQ(folder.Path(), QString());
  const QString why = folder.WhyNot();
  const QString begin = QStringLiteral("The demo has no folder for its settings: ");
  EXPECT_TRUE(why.startsWith(begin)) << why.toStdString();
  EXPECT_GT(why.size(), begin.size());
}

}  // namespace
}  // namespace quarn
