#include "app/window_stage.h"

#include <QTimer>
#include <utility>

#include "app/command_line_file.h"
#include "app/display.h"
#include "app/splash_page.h"

namespace quarn {

WindowStage::WindowStage(CQuarnDlg& dialog, PortSource& portSource, QStringList arguments)
    : m_dialog(dialog), m_portSource(portSource), m_arguments(std::move(arguments)) {}

InstanceLock WindowStage::TakeLock() { return TakeInstanceLock(); }

void WindowStage::ShowSplash() {
  CSplashPage splash;
  // The first look at the system's devices takes a while. The splash's two seconds have time for it.
  QTimer::singleShot(0, &splash, [this] {
    QStringList names;
    m_portSource.FriendlyNames(names);
  });
  splash.exec();
}

int WindowStage::Dpi() { return WindowDpi(m_dialog); }

bool WindowStage::MenuBarWraps() { return m_dialog.MenuBarWraps(); }

int WindowStage::MessageFontHeight() { return quarn::MessageFontHeight(); }

void WindowStage::AcceptDrops() { m_dialog.setAcceptDrops(true); }

QString WindowStage::CommandLineFile() { return ReadCommandLineFile(m_arguments); }

void WindowStage::PlaceMainDialog(int xPercent, int yPercent) { m_dialog.PlaceByPercent(xPercent, yPercent); }

void WindowStage::ShowMainDialog() {
  m_dialog.SetTitle(QString());
  m_dialog.show();
}

}  // namespace quarn
