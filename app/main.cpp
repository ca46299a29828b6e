#include <QApplication>

#include "app/main_dialog.h"
#include "app/program.h"
#include "app/start_up.h"
#include "serial/platform_serial.h"
#include "settings/data_folder.h"
#include "ui/wait_cursor.h"
#include "ui/window_messages.h"

int main(int argc, char* argv[]) {
  QApplication application(argc, argv);
  // Message boxes come and go before the main dialog is there, and their end is not the program's.
  QApplication::setQuitOnLastWindowClosed(false);
  const QString folder = quarn::DataFolder();
  const QString ports = quarn::PortsFolder(folder);
  quarn::Program program(folder, quarn::CreateLineOpener(ports), quarn::CreatePortSource(ports),
                         std::make_unique<quarn::WindowMessages>(), std::make_unique<quarn::WaitCursor>());
  quarn::CQuarnDlg dialog(program);
  quarn::StartUp(program, dialog);
  return QApplication::exec();
}
