// Lasting names without udev's data.

#include "serial/port_details_linux.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "serial/line_test_support.h"

namespace quarn {
namespace {

class LastingName : public testing::Test {
 protected:
  void SetUp() override {
    m_roots.dev = QDir(m_place.path()).canonicalPath().toStdString();
    for (const char* folder : {"serial/by-id", "serial/by-path"})
      ASSERT_TRUE(QDir(m_place.path()).mkpath(QString::fromLatin1(folder)));
    QFile node(QString::fromStdString(Node()));
    ASSERT_TRUE(node.open(QIODevice::WriteOnly));
  }
  [[nodiscard]] std::string Node() const { return m_roots.dev + "/ttyUSB0"; }
  void Link(const char* name) const {
    ASSERT_TRUE(QFile::link(QStringLiteral("../../ttyUSB0"),
                            m_place.filePath(QStringLiteral("serial/") + QString::fromLatin1(name))));
  }

  QTemporaryDir m_place;
  SystemRoots m_roots;
};

TEST_F(LastingName, IsTheDevicesOwnBeforeThatOfItsSocket) {
  EXPECT_EQ(LastingNameOf(Node(), m_roots), "");
  Link("by-path/usb-1");
  EXPECT_EQ(LastingNameOf(Node(), m_roots), m_roots.dev + "/serial/by-path/usb-1");
  Link("by-id/usb-b");
  Link("by-id/usb-a");
  EXPECT_EQ(LastingNameOf(Node(), m_roots), m_roots.dev + "/serial/by-id/usb-a") << "always the same one";
  EXPECT_EQ(LastingNameOf(m_roots.dev + "/ttyUSB1", m_roots), "");
}

TEST_F(LastingName, NeedsNoFolders) {
  SystemRoots nowhere;
  nowhere.dev = m_roots.dev + "/none";
  EXPECT_EQ(LastingNameOf(Node(), nowhere), "");
}

}  // namespace
}  // namespace quarn
