#include "app/window_stage.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLayout>
#include <QTimer>
#include <QWindow>
#include <utility>

#include "app/file_argument.h"
#include "app/platform.h"
#include "app/splash_page.h"
#include "ui/placement.h"
#include "ui/window_system.h"

namespace quarn {
namespace {

constexpr int kLongestWaitForKeyboardMs = 2000;

/// Until a window that was shown has the keyboard, which it gets when it is drawn. Keys are kept.
void WaitForKeyboard() {
  QEventLoop loop;
  QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &loop, &QEventLoop::quit);
  QTimer::singleShot(kLongestWaitForKeyboardMs, &loop, &QEventLoop::quit);
  if (QGuiApplication::focusWindow() == nullptr) loop.exec(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace

WindowStage::WindowStage(Program& program, QStringList arguments)
    : m_program(program), m_arguments(std::move(arguments)) {}

/// A demo shares nothing with another program that runs.
InstanceLock WindowStage::TakeLock(QString& reason) {
  return IsDemo(m_arguments) ? InstanceLock::Taken : TakeInstanceLock(reason);
}

void WindowStage::AskRunningProgram() {
  const QFileInfo file(FileArgument());
  quarn::AskRunningProgram(file.isFile() ? file.absoluteFilePath() : QString());
}

void WindowStage::ShowSplash() {
  CSplashPage splash;
  QTimer::singleShot(0, &splash, [this] { PrepareUnderSplash(); });
  splash.exec();
}

/// Slow steps, done during the splash's two seconds: the main dialog, the frame that the window manager gives
/// windows, and the first look at the system's devices.
void WindowStage::PrepareUnderSplash() {
  m_dialog = std::make_unique<CQuarnDlg>(m_program);
  m_dialog->layout()->activate();
  LearnUsualFrame();
  m_program.portSource->Ports();
}

int WindowStage::Dpi() { return WindowDpi(*m_dialog); }

QString WindowStage::TellHowToStart(int scalingPercent) {
  const QString how = HowToStartAtScaling(scalingPercent);
  if (!how.isEmpty()) WriteOnTerminal(how, TerminalStream::Error);
  return IsTerminal(TerminalStream::Error) ? QString() : how.trimmed();
}

bool WindowStage::MenuBarWraps() { return m_dialog->MenuBarWraps(); }

int WindowStage::MessageFontHeight() { return quarn::MessageFontHeight(); }

void WindowStage::AcceptDrops() { m_dialog->setAcceptDrops(true); }

QString WindowStage::FileArgument() {
  return IsDemo(m_arguments) ? QString() : ReadFileArgument(m_arguments);
}

void WindowStage::PlaceMainDialog(int xPercent, int yPercent) {
  m_dialog->PlaceByPercent(xPercent, yPercent);
}

void WindowStage::ShowMainDialog() {
  m_dialog->SetTitle(QString());
  // sway puts windows of X11 on each other in the order in which they are drawn.
  const bool isBeside = m_program.state.open.Contains(quarn::Window::TerminalScreen);
  if (isBeside && !MayPlaceWindows() && !IsOnWayland()) WaitForKeyboard();
  m_dialog->show();
  if (!IsDemo(m_arguments)) {
    m_requests.emplace([this](const QString& file) { m_dialog->TakeStartRequest(file); });
  }
}

bool WindowStage::MayPlaceWindows() { return quarn::MayPlaceWindows(); }

}  // namespace quarn
