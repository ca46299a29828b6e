#include "system/e2e/desktop.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>

#include "settings/key_store.h"

namespace quarn::test {
namespace {

constexpr int kToolMs = kLongestWaitMs;
constexpr int kDesktopMs = 60000;

/// The command that starts the window manager.
QStringList WindowManager() {
  return qEnvironmentVariable("QUARN_WINDOW_MANAGER", QStringLiteral("openbox --sm-disable"))
      .split(QLatin1Char(' '));
}

bool HasManager(const Desktop& desktop) {
  return desktop
      .Run(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")})
      .contains("window id");
}

}  // namespace

Desktop::Desktop(QSize screen) {
  if (!StartServer(screen)) qFatal("no virtual display: %s", m_server.readAllStandardError().constData());
  m_manager.setProcessEnvironment(StartBus());
  m_manager.setProcessChannelMode(QProcess::MergedChannels);
  const QString compositor = qEnvironmentVariable("QUARN_COMPOSITOR");
  if (compositor.isEmpty())
    StartManager();
  else
    StartCompositor(compositor, screen);
}

void Desktop::StartManager() {
  const QStringList manager = WindowManager();
  const auto isThere = [this, &manager] {
    // On a loaded machine the manager may give up on a server that is slow to answer: start it again.
    if (m_manager.state() == QProcess::NotRunning || m_manager.waitForFinished(0)) {
      m_manager.start(manager.value(0), manager.mid(1));
      m_manager.waitForStarted(kToolMs);
    }
    return HasManager(*this);
  };
  if (!Eventually(isThere, kDesktopMs)) qFatal("no window manager: %s", m_manager.readAll().constData());
}

void Desktop::StartCompositor(const QString& compositor, QSize screen) {
  QProcessEnvironment environment = m_manager.processEnvironment();
  environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
  environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_session.path());
  environment.insert(QStringLiteral("HOME"), m_session.path());
  m_manager.setProcessEnvironment(environment);
  // The compositor tells its session's variables to what it starts, and that ends with it.
  const QString told = m_session.filePath(QStringLiteral("told"));
  const QString tell = QStringLiteral("env >$0.part; mv $0.part $0; exec tail --pid=$PPID -f /dev/null");
  m_manager.start(QStringLiteral(QUARN_NESTED_COMPOSITOR),
                  {compositor, QString::number(screen.width()), QString::number(screen.height()),
                   QStringLiteral("sh"), QStringLiteral("-c"), tell, told});
  const auto isThere = [&] {
    if (QFile file(told); m_told.isEmpty() && file.open(QIODevice::ReadOnly))
      m_told = QString::fromLocal8Bit(file.readAll()).split(QLatin1Char('\n'));
    return !Told(QStringLiteral("DISPLAY")).isEmpty() && HasManager(*this);
  };
  if (!Eventually(isThere, kDesktopMs)) qFatal("no compositor: %s", m_manager.readAll().constData());
  // As on the virtual display: on a busy computer a key's release can come late.
  Run(QStringLiteral("xset"), {QStringLiteral("r"), QStringLiteral("off")});
}

QString Desktop::Told(const QString& variable) const {
  const QStringList found = m_told.filter(QRegularExpression(QStringLiteral("^%1=").arg(variable)));
  return found.value(0).mid(variable.size() + 1);
}

QProcessEnvironment Desktop::StartBus() {
  QProcessEnvironment environment = Environment();
  // The tests have an accessibility bus of their own.
  environment.insert(QStringLiteral("NO_AT_BRIDGE"), QStringLiteral("1"));
  if (!qEnvironmentVariableIsSet("QUARN_WINDOW_MANAGER_BUS")) return environment;
  m_bus.setProcessEnvironment(environment);
  m_bus.setStandardErrorFile(QProcess::nullDevice());
  m_bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
  QByteArray address;
  while (!address.endsWith('\n') && m_bus.waitForReadyRead(kToolMs)) address += m_bus.readAllStandardOutput();
  if (!address.endsWith('\n')) qFatal("no bus for the window manager");
  environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromLocal8Bit(address.trimmed()));
  return environment;
}

bool Desktop::StartServer(QSize screen) {
  // Servers that choose their displays themselves now and then choose the same one when they start at the
  // same time. Tests that run side by side start from their process's number instead.
  const QString size = QStringLiteral("%1x%2x24").arg(screen.width()).arg(screen.height());
  constexpr qint64 kFirst = 100;
  constexpr qint64 kSpan = 50000;
  for (qint64 attempt = 0; attempt < 10; ++attempt) {
    const qint64 number = kFirst + (QCoreApplication::applicationPid() + attempt * 997) % kSpan;
    m_display = QLatin1Char(':') + QString::number(number);
    // Without repeated keys (-r): on a busy computer a key's release can come so late that the server would
    // repeat the key.
    m_server.start(QStringLiteral("Xvfb"),
                   {m_display, QStringLiteral("-r"), QStringLiteral("-displayfd"), QStringLiteral("1"),
                    QStringLiteral("-screen"), QStringLiteral("0"), size, QStringLiteral("-nolisten"),
                    QStringLiteral("tcp")});
    // It says its number when it is ready, and ends at once when the display is taken.
    QByteArray said;
    while (!said.endsWith('\n') && m_server.waitForReadyRead(kToolMs))
      said += m_server.readAllStandardOutput();
    if (said.endsWith('\n')) return true;
    End(m_server);
  }
  return false;
}

Desktop::~Desktop() {
  End(m_manager);
  End(m_bus);
  End(m_server);
}

QProcessEnvironment Desktop::Environment() const {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("DISPLAY"), m_display);
  environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
  if (m_told.isEmpty()) return environment;
  environment.insert(QStringLiteral("DISPLAY"), Told(QStringLiteral("DISPLAY")));
  environment.insert(QStringLiteral("XAUTHORITY"), Told(QStringLiteral("XAUTHORITY")));
  environment.insert(QStringLiteral("WAYLAND_DISPLAY"),
                     m_session.filePath(Told(QStringLiteral("WAYLAND_DISPLAY"))));
  environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
  return environment;
}

void Desktop::Input(const QStringList& arguments) const {
  ChildProcess process;
  QProcessEnvironment environment = Environment();
  environment.insert(QStringLiteral("DISPLAY"), m_display);
  environment.remove(QStringLiteral("XAUTHORITY"));
  process.setProcessEnvironment(environment);
  process.setStandardErrorFile(QProcess::nullDevice());
  process.start(QStringLiteral("xdotool"), arguments);
  process.waitForFinished(kToolMs);
}

QByteArray Desktop::Run(const QString& tool, const QStringList& arguments) const {
  ChildProcess process;
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

std::optional<QMargins> Desktop::Frame(const QString& window) const {
  const QByteArray text =
      Run(QStringLiteral("xprop"), {QStringLiteral("-id"), window, QStringLiteral("_NET_FRAME_EXTENTS")});
  const QList<QByteArray> sides = text.mid(text.indexOf('=') + 1).trimmed().split(',');
  if (sides.size() != 4) return std::nullopt;
  const auto side = [&](qsizetype i) { return sides[i].trimmed().toInt(); };
  return QMargins(side(0), side(2), side(1), side(3));
}

std::optional<QRect> Desktop::Outer(const QString& window) const {
  const std::optional<QMargins> frame = Frame(window);
  if (!frame) return std::nullopt;
  return Inner(window).marginsAdded(*frame);
}

QRect Desktop::Inner(const QString& window) const {
  const QString text = QString::fromLatin1(Run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), window}));
  const auto value = [&](const char* name) {
    const QRegularExpression line(QStringLiteral("%1: +(-?\\d+)").arg(QLatin1String(name)));
    return line.match(text).captured(1).toInt();
  };
  return {value("Absolute upper-left X"), value("Absolute upper-left Y"), value("Width"), value("Height")};
}

EndToEnd::EndToEnd(QSize screen)
    : desktop(screen), portLinks(config.filePath(QStringLiteral("Halvo/Quarn/ports"))) {
  QProcessEnvironment environment = desktop.Environment();
  environment.insert(QStringLiteral("HOME"), home.path());
  environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
  environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
  // Where there is Wayland too, the program chooses.
  if (desktop.IsOnCompositor()) environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
  // The program must not use the session of the user who runs the tests, and gets none of its own.
  environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                     QStringLiteral("unix:path=") + runtime.filePath(QStringLiteral("no-session")));
  environment.remove(QStringLiteral("AT_SPI_BUS_ADDRESS"));
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
  ASSERT_TRUE(portLinks.Add(kPort, instrument->NodePath()));
}

void EndToEnd::UnplugPort() {
  ASSERT_TRUE(portLinks.Remove(kPort));
  instrument.reset();
}

void EndToEnd::StartProgram(const QStringList& arguments) {
  program.start(QStringLiteral(QUARN_PROGRAM), arguments);
  ASSERT_TRUE(program.waitForStarted());
}

std::unique_ptr<ProgramRun> EndToEnd::StartAnother(const QStringList& arguments) const {
  return std::make_unique<ProgramRun>(QStringLiteral(QUARN_PROGRAM), arguments, program.processEnvironment());
}

void EndToEnd::StartConnected(std::string_view rules, const QList<QPair<QString, QString>>& values) {
  WriteSettings(QList<QPair<QString, QString>>{{QStringLiteral("COM_PORT"), kPort}} + values);
  PlugIn(rules);
  StartProgram();
  terminal = WaitForWindow(kTerminal);
  ASSERT_FALSE(terminal.isEmpty());
  Focus(terminal);
}

void EndToEnd::Focus(const QString& window) {
  const auto isActive = [&] {
    return desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}).trimmed() ==
           window.toLatin1();
  };
  // A window that is just being mapped may miss the first request.
  EXPECT_TRUE(Eventually([&] {
    desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("windowactivate"), window});
    return Eventually(isActive, kOneTryMs);
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
  desktop.Input({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("8"), text});
}

void EndToEnd::Press(const QStringList& keys) {
  desktop.Input(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("8")} + keys);
}

QByteArray EndToEnd::ClipboardText() {
  return desktop.Run(QStringLiteral("xclip"),
                     {QStringLiteral("-o"), QStringLiteral("-selection"), QStringLiteral("clipboard")});
}

void EndToEnd::SetClipboard(const QByteArray& text) {
  ChildProcess xclip;
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
  // The menu is a window without a title. A click right after a box has closed may be dropped, so the test
  // clicks again.
  EXPECT_TRUE(Eventually([&] {
    ClickAt(terminal, QPoint(200, 300), 3);
    return Eventually([&] { return windows() > before; }, kOneTryMs);
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
  ClickOnScreen(desktop.Inner(window).topLeft() + place, button);
}

void EndToEnd::ClickOnScreen(QPoint place, int button) {
  QStringList steps{QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())};
  if (button > 0) steps += {QStringLiteral("click"), QString::number(button)};
  desktop.Input(steps);
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
