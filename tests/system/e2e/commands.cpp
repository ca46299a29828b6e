#include "system/e2e/commands.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <QFile>
#include <array>
#include <utility>

#include "settings/key_store.h"

namespace quarn::test {
FarEnd::FarEnd() : m_descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
  std::array<char, 128> device{};
  if (grantpt(m_descriptor) == 0 && unlockpt(m_descriptor) == 0 &&
      ptsname_r(m_descriptor, device.data(), device.size()) == 0)
    m_node = QString::fromLocal8Bit(device.data());
}

FarEnd::~FarEnd() { close(m_descriptor); }

bool FarEnd::HungUp() const {
  pollfd end{.fd = m_descriptor, .events = POLLIN, .revents = 0};
  return poll(&end, 1, 0) == 1 && (end.revents & POLLHUP) != 0;
}

PropertyWatch::PropertyWatch(const Desktop& desktop, const QStringList& window, const QString& property) {
  m_process.setProcessEnvironment(desktop.Environment());
  m_process.start(QStringLiteral("xprop"), window + QStringList{QStringLiteral("-spy"), property});
  EXPECT_TRUE(Eventually([this] { return Lines().endsWith('\n'); }));
}

QByteArray PropertyWatch::Lines() {
  m_process.waitForReadyRead(1);
  m_lines += m_process.readAllStandardOutput();
  return m_lines;
}

Commands::Commands(QSize screen) : AccessibleWindows(screen) { program.setWorkingDirectory(files.path()); }

void Commands::StartWithoutTerminal(std::string_view rules) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}, {QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
  PlugIn(rules);
  StartProgram();
  ASSERT_FALSE(WaitForWindow(kMain).isEmpty());
}

QString Commands::UserFile(const QString& name, const QList<QPair<QString, QString>>& values) {
  QString path = PathOf(name);
  EXPECT_TRUE(WriteDefaultFile(path));
  for (const auto& [key, value] : values) {
    const QString whole = key + QLatin1Char('=');
    EXPECT_TRUE(UpdateValue(path, SettingsKey(whole), value));
  }
  return path;
}

QByteArray Commands::BytesOf(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
  return file.readAll();
}

void Commands::ChangeSettings() {
  ASSERT_TRUE(UpdateValue(SettingsFile(), SettingsKey(u"MEM3="), QStringLiteral("changed")));
}

::testing::AssertionResult Commands::Passes(const QString& text) { return BoxSays(kPassing, {text}); }

void Commands::Acknowledge(const QString& titlePattern, const QStringList& texts) {
  EXPECT_TRUE(BoxSays(titlePattern, texts));
  EXPECT_EQ(Buttons(titlePattern), QStringList{QStringLiteral("OK")});
  AnswerBox(titlePattern, QStringLiteral("OK"));
}

void Commands::Answer(const QStringList& texts, const QString& answer) {
  EXPECT_TRUE(BoxSays(kConfirmation, texts));
  EXPECT_EQ(Buttons(kConfirmation), (QStringList{kYes, kNo}));
  AnswerBox(kConfirmation, answer);
}

void Commands::Choose(const QString& menu, const QString& item) {
  ASSERT_TRUE(WaitForNoWindow(QStringLiteral("^Quarn : ")));
  ChooseFromMenu(menu, item);
}

QString Commands::NameInFileDialog(const QString& titlePattern) {
  for (const Control& each : Controls(titlePattern))
    if (each.role == QLatin1String("text")) return bus.Text(each);
  return {};
}

void Commands::TypePath(const QString& titlePattern, const QString& path, std::function<bool()> until) {
  const QString dialog = WaitForWindow(titlePattern);
  ASSERT_FALSE(dialog.isEmpty());
  if (!until) until = [&] { return !desktop.Windows(titlePattern).contains(dialog); };
  Focus(dialog);
  Press({QStringLiteral("ctrl+a")});
  Type(path);
  ASSERT_TRUE(Eventually([&] { return NameInFileDialog(titlePattern) == path; }))
      << NameInFileDialog(titlePattern).toStdString();
  EXPECT_TRUE(Eventually([&] {
    Press({QStringLiteral("Return")});
    return Eventually(until, kOneTryMs);
  })) << "Enter has no effect";
}

::testing::AssertionResult Commands::StatusBecomes(const QString& status) {
  return Becomes(status, [this] { return Texts(kMain).value(2); });
}

::testing::AssertionResult Commands::FileInForceBecomes(const QString& path) {
  return StatusBecomes(QStringLiteral("( %1 )").arg(path));
}

::testing::AssertionResult Commands::MainTitleBecomes(const QString& title) {
  return Becomes(title, [this] { return Title(desktop.Windows(kMain).value(0)); });
}

::testing::AssertionResult Commands::PortItemsBecome(bool connect, bool disconnect, bool reset) {
  const auto spoken = [](bool first, bool second, bool third) {
    return QStringLiteral("Connect %1, Disconnect %2, Reset %3").arg(first).arg(second).arg(third);
  };
  return Becomes(spoken(connect, disconnect, reset), [&] {
    return spoken(MenuItemEnabled(kPortMenu, QStringLiteral("Connect COM Port")),
                  MenuItemEnabled(kPortMenu, QStringLiteral("Disconnect COM Port")),
                  MenuItemEnabled(kPortMenu, QStringLiteral("Reset Current COM Port")));
  });
}

void Commands::EnterCommand(const QString& command) {
  ASSERT_TRUE(WaitForNoWindow(QStringLiteral("^Quarn : ")));
  terminal = WaitForWindow(kTerminal);
  Focus(terminal);
  if (!command.isEmpty()) Type(command);
  Press({QStringLiteral("Return")});
}

}  // namespace quarn::test
