#include "app/window_stage.h"

#include <utility>

#include "app/command_line_file.h"
#include "app/display.h"
#include "app/splash_page.h"

namespace quarn {

WindowStage::WindowStage(CQuarnDlg& dialog, QStringList arguments)
    : m_dialog(dialog), m_arguments(std::move(arguments)) {}

InstanceLock WindowStage::TakeLock() { return TakeInstanceLock(); }

void WindowStage::ShowSplash() { CSplashPage().exec(); }

int WindowStage::Dpi() { return WindowDpi(m_dialog); }

bool WindowStage::MenuBarWraps() { return m_dialog.MenuBarWraps(); }

int WindowStage::MessageFontHeight() { return quarn::MessageFontHeight(); }

void WindowStage::AcceptDrops() { m_dialog.setAcceptDrops(true); }

QString WindowStage::CommandLineFile() { return ReadCommandLineFile(m_arguments); }

void WindowStage::PlaceMainDialog(int xPercent, int yPercent) { m_dialog.PlaceByPercent(xPercent, yPercent); }

void WindowStage::ShowMainDialog() { m_dialog.show(); }

}  // namespace quarn
