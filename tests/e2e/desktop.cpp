#include "e2e/desktop.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>

#include <QRegularExpression>
#include <QThread>

#include "settings/key_store.h"

namespace quarn::test {
namespace {

constexpr int kToolMs = 20000;
constexpr int kDesktopMs = 60000;
constexpr int kEndMs = 5000;
constexpr int kPollMs = 20;

void End(QProcess& process) {
  if (process.state() == QProcess::NotRunning) return;
  process.terminate();
  if (process.waitForFinished(kEndMs)) return;
  process.kill();
  process.waitForFinished(kEndMs);
}

}  // namespace

bool Eventually(const std::function<bool()>& condition, int limitMs) {
  const QDeadlineTimer deadline(limitMs);
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QThread::msleep(kPollMs);
  }
  return true;
}

Desktop::Desktop() {
  // The server chooses a free display and writes its number, so that tests can run side by side.
  m_server.start(
      QStringLiteral("Xvfb"),
      {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
       QStringLiteral("1280x1024x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp")});
  QByteArray number;
  while (!number.endsWith('\n') && m_server.waitForReadyRead(kToolMs))
    number += m_server.readAllStandardOutput();
  if (!number.endsWith('\n')) qFatal("no virtual display: %s", m_server.readAllStandardError().constData());
  m_display = QLatin1Char(':') + QString::fromLatin1(number.trimmed());
  m_manager.setProcessEnvironment(Environment());
  m_manager.setProcessChannelMode(QProcess::MergedChannels);
  const auto isThere = [this] {
    // On a loaded machine the manager may give up on a server that is slow to answer: start it again.
    if (m_manager.state() == QProcess::NotRunning || m_manager.waitForFinished(0)) {
      m_manager.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
      m_manager.waitForStarted(kToolMs);
    }
    return Run(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")})
        .contains("window id");
  };
  if (!Eventually(isThere, kDesktopMs)) qFatal("no window manager: %s", m_manager.readAll().constData());
}

Desktop::~Desktop() {
  End(m_manager);
  End(m_server);
}

QProcessEnvironment Desktop::Environment() const {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("DISPLAY"), m_display);
  environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
  return environment;
}

QByteArray Desktop::Run(const QString& tool, const QStringList& arguments) const {
  QProcess process;
  process.setProcessEnvironment(Environment());
  process.setStandardErrorFile(QProcess::nullDevice());
  process.start(tool, arguments);
  process.closeWriteChannel();
  process.waitForFinished(kToolMs);
  return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0
             ? process.readAllStandardOutput()
             : QByteArray();
}

QStringList Desktop::Windows(const QString& titlePattern) const {
  const QByteArray found = Run(
      QStringLiteral("xdotool"),
      {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), titlePattern});
  return QString::fromLatin1(found).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

EndToEnd::EndToEnd() {
  QDir().mkpath(config.filePath(QStringLiteral("Halvo/Quarn/ports")));
  QProcessEnvironment environment = desktop.Environment();
  environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
  program.setProcessEnvironment(environment);
  program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

EndToEnd::~EndToEnd() { End(program); }

QString EndToEnd::SettingsFile() const { return config.filePath(QStringLiteral("Halvo/Quarn/Quarn.ini")); }

void EndToEnd::WriteSettings(const QList<QPair<QString, QString>>& values) {
  ASSERT_TRUE(WriteDefaultFile(SettingsFile()));
  for (const auto& [key, value] : values) {
    const QString whole = key + QLatin1Char('=');
    ASSERT_TRUE(UpdateValue(SettingsFile(), SettingsKey(whole), value));
  }
}

void EndToEnd::PlugIn(std::string_view rules) {
  instrument = std::make_unique<ServedInstrument>(rules);
  const QString link = config.filePath(QStringLiteral("Halvo/Quarn/ports/COM3"));
  QFile::remove(link);
  ASSERT_TRUE(QFile::link(instrument->NodePath(), link));
}

void EndToEnd::StartProgram() {
  program.start(QStringLiteral(QUARN_PROGRAM), {});
  ASSERT_TRUE(program.waitForStarted());
}

void EndToEnd::StartConnected(std::string_view rules, const QList<QPair<QString, QString>>& values) {
  WriteSettings(QList<QPair<QString, QString>>{{QStringLiteral("COM_PORT"), QStringLiteral("COM3")}} +
                values);
  PlugIn(rules);
  StartProgram();
  terminal = WaitForWindow(kTerminal);
  ASSERT_FALSE(terminal.isEmpty());
  Focus(terminal);
}

void EndToEnd::Focus(const QString& window) {
  desktop.Run(QStringLiteral("xdotool"),
              {QStringLiteral("windowactivate"), QStringLiteral("--sync"), window});
  EXPECT_TRUE(Eventually([&] {
    return desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}).trimmed() ==
           window.toLatin1();
  }));
}

QString EndToEnd::WaitForWindow(const QString& titlePattern) {
  QStringList found;
  EXPECT_TRUE(Eventually([&] {
    found = desktop.Windows(titlePattern);
    return !found.isEmpty();
  })) << "no window titled "
      << titlePattern.toStdString();
  return found.value(0);
}

bool EndToEnd::WaitForNoWindow(const QString& titlePattern) {
  return Eventually([&] { return desktop.Windows(titlePattern).isEmpty(); });
}

QString EndToEnd::Title(const QString& window) {
  QString title =
      QString::fromUtf8(desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("getwindowname"), window}));
  if (title.endsWith(QLatin1Char('\n'))) title.chop(1);
  return title;
}

::testing::AssertionResult EndToEnd::TerminalTitleBecomes(const QString& title) {
  if (Eventually([&] { return Title(terminal) == title; })) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the title is \"" << Title(terminal).toStdString() << '"';
}

::testing::AssertionResult EndToEnd::WireBecomes(const std::string& bytes) {
  if (Eventually([&] { return instrument->Received() == bytes; })) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "on the wire: \"" << instrument->Received() << '"';
}

void EndToEnd::Type(const QString& text) {
  desktop.Run(QStringLiteral("xdotool"),
              {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("8"), text});
}

void EndToEnd::Press(const QStringList& keys) {
  desktop.Run(QStringLiteral("xdotool"),
              QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("8")} + keys);
}

QByteArray EndToEnd::ClipboardText() {
  return desktop.Run(QStringLiteral("xclip"),
                     {QStringLiteral("-o"), QStringLiteral("-selection"), QStringLiteral("clipboard")});
}

void EndToEnd::SetClipboard(const QByteArray& text) {
  QProcess xclip;
  xclip.setProcessEnvironment(desktop.Environment());
  xclip.setStandardOutputFile(QProcess::nullDevice());
  xclip.start(QStringLiteral("xclip"), {QStringLiteral("-selection"), QStringLiteral("clipboard")});
  xclip.write(text);
  xclip.closeWriteChannel();
  ASSERT_TRUE(xclip.waitForFinished(kToolMs));
  ASSERT_TRUE(Eventually([&] { return ClipboardText() == text; }));
}

void EndToEnd::ChooseFromContextMenu(int item) {
  const auto windows = [this] {
    return desktop
        .Run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                         QStringLiteral("--class"), QStringLiteral("^quarn$")})
        .count('\n');
  };
  Focus(terminal);
  const qsizetype before = windows();
  // The menu is a window without a title. A click that comes right after a box has closed may be dropped, as
  // it is when a person clicks too early: click again.
  constexpr int kPatienceMs = 1500;
  EXPECT_TRUE(Eventually([&] {
    ClickAt(terminal, QPoint(200, 300), 3);
    return Eventually([&] { return windows() > before; }, kPatienceMs);
  }));
  Press(QStringList(item, QStringLiteral("Down")) + QStringList{QStringLiteral("Return")});
}

QByteArray EndToEnd::CopiedLog() {
  const QByteArray mark("nothing copied yet");
  SetClipboard(mark);
  ChooseFromContextMenu(2);
  EXPECT_TRUE(Eventually([&] { return ClipboardText() != mark; }));
  return ClipboardText();
}

void EndToEnd::ClickAt(const QString& window, QPoint place, int button) {
  QStringList steps = {QStringLiteral("mousemove"), QStringLiteral("--window"), window,
                       QString::number(place.x()), QString::number(place.y())};
  if (button > 0) steps += {QStringLiteral("click"), QString::number(button)};
  desktop.Run(QStringLiteral("xdotool"), steps);
}

QRect EndToEnd::Geometry(const QString& window) {
  const QString text = QString::fromLatin1(desktop.Run(
      QStringLiteral("xdotool"), {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window}));
  const auto value = [&](const char* name) {
    const QRegularExpression line(QStringLiteral("^%1=(-?\\d+)$").arg(QLatin1String(name)),
                                  QRegularExpression::MultilineOption);
    return line.match(text).captured(1).toInt();
  };
  return {value("X"), value("Y"), value("WIDTH"), value("HEIGHT")};
}

}  // namespace quarn::test
