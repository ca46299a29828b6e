#include "app/window_stage.h"

#include <QApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QLayout>
#include <QScopedValueRollback>
#include <QTimer>
#include <QWindow>
#include <utility>

#include "app/file_argument.h"
#include "app/platform.h"
#include "app/splash_page.h"
#include "ui/box_order.h"
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
  if (IsDemo(m_arguments)) return InstanceLock::Taken;
  const InstanceLock lock = TakeInstanceLock(reason);
  if (lock == InstanceLock::Taken) m_requests.emplace([this](const QString& file) { TakeRequest(file); });
  return lock;
}

/// The main dialog handles it. Before that is shown, only a box of the start can come to the front.
void WindowStage::TakeRequest(const QString& file) {
  if (m_isDialogShown && !m_waitingFile) {
    m_dialog->TakeStartRequest(file);
    return;
  }
  if (!m_waitingFile || !file.isEmpty()) m_waitingFile = file;
  QWidget* const box = QApplication::activeModalWidget();
  if (box != nullptr && !m_isSplashUp) BringToFront(*box);
}

void WindowStage::AskRunningProgram() {
  const QFileInfo file(FileArgument());
  quarn::AskRunningProgram(file.isFile() ? file.absoluteFilePath() : QString());
}

void WindowStage::ShowSplash() {
  CSplashPage splash;
  QTimer::singleShot(0, &splash, [this] { PrepareUnderSplash(); });
  const QScopedValueRollback up(m_isSplashUp, true);
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
  m_isDialogShown = true;
  // From the event loop, when the start is complete and the dialog ticks.
  const auto handOn = [this] {
    if (m_waitingFile) m_dialog->TakeStartRequest(*std::exchange(m_waitingFile, std::nullopt));
  };
  QMetaObject::invokeMethod(m_dialog.get(), handOn, Qt::QueuedConnection);
}

bool WindowStage::MayPlaceWindows() { return quarn::MayPlaceWindows(); }

}  // namespace quarn
