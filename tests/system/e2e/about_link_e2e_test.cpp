#include <QFileInfo>

#include "system/e2e/starts.h"

namespace quarn::test {
namespace {

/// The link in the about box, on a desktop whose browser writes down what it is asked for.
class AboutLink : public Starts {
 protected:
  const QString kAboutBox = QStringLiteral("^About  Quarn");

  /// A program that stands before the desktop's own: the number of its arguments and each of them, a line
  /// each.
  void PutBrowserInPath() {
    const QString tool = m_tools.filePath(QStringLiteral("xdg-open"));
    // Renamed, so that it is there whole or not at all.
    WriteBytes(tool, "#!/bin/sh\nprintf '%s\\n' $# \"$@\" >\"$0.new\" && mv \"$0.new\" \"$0.told\"\n");
    ASSERT_TRUE(QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    SetVariable("PATH", m_tools.path() + QLatin1Char(':') + qEnvironmentVariable("PATH"));
  }
  [[nodiscard]] QString Told() const { return m_tools.filePath(QStringLiteral("xdg-open.told")); }

 private:
  QTemporaryDir m_tools;
};

TEST_F(AboutLink, IsOneArgumentForTheDesktopsOwnProgram) {
  PutBrowserInPath();
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}, {QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
  PlugIn("* -> line \"OK\"");
  StartProgram();
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  ChooseFromMenu(QStringLiteral("Help"), QStringLiteral("About"));
  Focus(WaitForWindow(kAboutBox));
  const QString address = QStringLiteral("https://www.halvo.example");
  ASSERT_TRUE(Eventually([&] { return FindControl(kAboutBox, address).has_value(); }));
  ClickOnScreen(FindControl(kAboutBox, address)->place.center());
  ASSERT_TRUE(Eventually([this] { return QFileInfo::exists(Told()); }));
  EXPECT_EQ(Bytes(Told()), QByteArray("1\nhttps://www.halvo.example/quarn\n"));
}

}  // namespace
}  // namespace quarn::test
