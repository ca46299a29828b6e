#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QUrl>
#include <thread>
#include <utility>

#include "app/platform.h"
#include "support/silent_socket_linux.h"

namespace quarn::test {
namespace {

const QByteArrayList kVariables{"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS",
                                "XDG_RUNTIME_DIR", "GDK_GL",          "PATH"};

/// The environment is as it was before when a test ends.
class DesktopSessionTest : public ::testing::Test {
 protected:
  DesktopSessionTest() {
    for (const QByteArray& name : kVariables) {
      m_before.append(qgetenv(name));
      qunsetenv(name);
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + Path("nobody").toLocal8Bit());
  }
  ~DesktopSessionTest() override {
    for (qsizetype i = 0; i < kVariables.size(); ++i) {
      if (m_before[i].isNull()) {
        qunsetenv(kVariables[i]);
      } else {
        qputenv(kVariables[i], m_before[i]);
      }
    }
  }
  [[nodiscard]] QString Path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
  /// The platform that the application object would find.
  static QByteArray ChosenPlatform(const QStringList& arguments = {QStringLiteral("quarn")}) {
    const DesktopSession session(arguments);
    return qgetenv("QT_QPA_PLATFORM");
  }
  static QByteArray BusAfterwards() {
    const DesktopSession session({QStringLiteral("quarn")});
    return qgetenv("DBUS_SESSION_BUS_ADDRESS");
  }

 private:
  QTemporaryDir m_folder;
  QByteArrayList m_before;
};

TEST_F(DesktopSessionTest, GtkLoadsNoOpenGlAtTheStart) {
  {
    const DesktopSession session({QStringLiteral("quarn")});
    EXPECT_EQ(qgetenv("GDK_GL"), QByteArray("disable"));
  }
  EXPECT_FALSE(qEnvironmentVariableIsSet("GDK_GL")) << "programs that it starts would have it";
  qputenv("GDK_GL", "always");
  {
    const DesktopSession session({QStringLiteral("quarn")});
    EXPECT_EQ(qgetenv("GDK_GL"), QByteArray("always"));
  }
  EXPECT_EQ(qgetenv("GDK_GL"), QByteArray("always"));
}

TEST_F(DesktopSessionTest, OfTwoDisplaysTheOneWithPlacesIsTaken) {
  qputenv("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_EQ(ChosenPlatform(), QByteArray());
  qputenv("DISPLAY", ":0");
  EXPECT_EQ(ChosenPlatform(), QByteArray("xcb;wayland"));
  EXPECT_FALSE(qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) << "programs that it starts would have it";
  qunsetenv("WAYLAND_DISPLAY");
  EXPECT_EQ(ChosenPlatform(), QByteArray());
}

TEST_F(DesktopSessionTest, WhatWasAskedForIsTaken) {
  qputenv("WAYLAND_DISPLAY", "wayland-0");
  qputenv("DISPLAY", ":0");
  EXPECT_EQ(ChosenPlatform({QStringLiteral("quarn"), QStringLiteral("-platform"), QStringLiteral("wayland")}),
            QByteArray());
  qputenv("QT_QPA_PLATFORM", "wayland");
  EXPECT_EQ(ChosenPlatform(), QByteArray("wayland"));
  EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("wayland"));
}

TEST_F(DesktopSessionTest, ABusThatDoesNotAnswerIsLeftAlone) {
  const SilentSocket bus(Path("bus"));
  for (const QByteArray& address : {"unix:path=" + Path("bus").toLocal8Bit() + ",guid=1",
                                    "unix:path=" + Path("%62us").toLocal8Bit() + ";unix:path=/x"}) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    EXPECT_EQ(BusAfterwards(), QByteArray("disabled:")) << address.constData();
  }
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  qputenv("XDG_RUNTIME_DIR", QFileInfo(Path("bus")).path().toLocal8Bit());
  EXPECT_EQ(BusAfterwards(), QByteArray("disabled:")) << "the session's usual place";
}

/// The bus of a program that is started to show a page, and Quarn's own afterwards.
std::pair<QByteArray, QByteArray> BusOfBrowser() {
  QTextBrowser browser;
  QByteArray address = "nobody was started";
  QObject::connect(&browser, &QTextBrowser::sourceChanged, &browser,
                   [&address] { address = qgetenv("DBUS_SESSION_BUS_ADDRESS"); });
  const QString scheme = QStringLiteral("quarn-page");
  QDesktopServices::setUrlHandler(scheme, &browser, "setSource");
  EXPECT_TRUE(OpenPage(QUrl(scheme + QStringLiteral(":page"))));
  QDesktopServices::unsetUrlHandler(scheme);
  return {address, qgetenv("DBUS_SESSION_BUS_ADDRESS")};
}

TEST_F(DesktopSessionTest, ABrowserHasTheBusThatQuarnLeavesAlone) {
  const SilentSocket bus(Path("bus"));
  const QByteArray address = "unix:path=" + Path("bus").toLocal8Bit();
  qputenv("DBUS_SESSION_BUS_ADDRESS", address);
  ASSERT_EQ(BusAfterwards(), QByteArray("disabled:"));
  EXPECT_EQ(BusOfBrowser(), std::pair(address, QByteArray("disabled:")));
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  qputenv("XDG_RUNTIME_DIR", QFileInfo(Path("bus")).path().toLocal8Bit());
  ASSERT_EQ(BusAfterwards(), QByteArray("disabled:"));
  EXPECT_EQ(BusOfBrowser(), std::pair(QByteArray(), QByteArray("disabled:")));
  const QByteArray nobody = "unix:path=" + Path("nobody").toLocal8Bit();
  qputenv("DBUS_SESSION_BUS_ADDRESS", nobody);
  ASSERT_EQ(BusAfterwards(), nobody);
  EXPECT_EQ(BusOfBrowser(), std::pair(nobody, nobody));
}

TEST_F(DesktopSessionTest, WithoutABusNoneIsSearchedForInVain) {
  // A system may have the program that starts a bus; then it is asked.
  const bool installed = QFile::exists(QStringLiteral("/usr/bin/dbus-launch"));
  const QByteArray without = installed ? QByteArray() : QByteArray("disabled:");
  const QByteArray folder = QFileInfo(Path("bus")).path().toLocal8Bit();
  qputenv("PATH", folder);
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_EQ(BusAfterwards(), without) << "no session folder";
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  qputenv("XDG_RUNTIME_DIR", folder);
  EXPECT_EQ(BusAfterwards(), without) << "a session folder without a bus";
  qputenv("DBUS_SESSION_BUS_ADDRESS", "autolaunch:");
  EXPECT_EQ(BusAfterwards(), installed ? QByteArray("autolaunch:") : without);

  QFile launcher(Path("dbus-launch"));
  ASSERT_TRUE(launcher.open(QIODevice::WriteOnly));
  launcher.close();
  ASSERT_TRUE(launcher.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_EQ(BusAfterwards(), QByteArray()) << "a program that can start one";
  ASSERT_TRUE(launcher.remove());

  QFile bus(Path("bus"));
  ASSERT_TRUE(bus.open(QIODevice::WriteOnly));
  EXPECT_EQ(BusAfterwards(), QByteArray()) << "something has the bus's place";
}

TEST_F(DesktopSessionTest, ABusThatAnswersStays) {
  const SilentSocket server(Path("bus"));
  QByteArray question;
  std::thread answering([&server, &question] {
    const int caller = ::accept(server.Descriptor(), nullptr, nullptr);
    QByteArray bytes(64, '\0');
    const ssize_t count = ::recv(caller, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
    question = bytes.first(qMax<ssize_t>(count, 0));
    EXPECT_EQ(::send(caller, "REJECTED EXTERNAL\r\n", 19, MSG_NOSIGNAL), 19);
    ::close(caller);
  });
  const QByteArray address = "unix:path=" + Path("bus").toLocal8Bit();
  qputenv("DBUS_SESSION_BUS_ADDRESS", address);
  EXPECT_EQ(BusAfterwards(), address);
  answering.join();
  EXPECT_TRUE(question.startsWith(QByteArray("\0AUTH EXTERNAL ", 15))) << question.constData();
  EXPECT_TRUE(question.endsWith("\r\n"));
}

TEST_F(DesktopSessionTest, ABusThatIsNotThereStays) {
  const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_EQ(BusAfterwards(), address);
  qputenv("DBUS_SESSION_BUS_ADDRESS", "tcp:host=localhost");
  EXPECT_EQ(BusAfterwards(), QByteArray("tcp:host=localhost")) << "of another kind";
}

}  // namespace
}  // namespace quarn::test
