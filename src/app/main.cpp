#include <QApplication>
#include <cstdlib>
#include <memory>

#include "app/fatal_limits.h"
#include "app/file_argument.h"
#include "app/platform.h"
#include "app/program.h"
#include "app/start_up.h"
#include "app/window_stage.h"
#include "serial/platform_serial.h"
#include "settings/data_folder.h"
#include "terminal/standard_streams.h"
#include "ui/pictures.h"
#include "ui/wait_cursor.h"
#include "ui/window_messages.h"

namespace {

QStringList ArgumentsOf(int argc, char* argv[]) {
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
  return arguments;
}

}  // namespace

int main(int argc, char* argv[]) {
  quarn::OccupyStandardStreams();
  const QStringList arguments = ArgumentsOf(argc, argv);
  if (const auto status = quarn::AnswerAtOnce(arguments)) return *status;
  auto session = std::make_unique<quarn::DesktopSession>(arguments);
  const QApplication application(argc, argv);
  session.reset();
  QApplication::setWindowIcon(quarn::ApplicationIcon());
  // Message boxes close before the main dialog exists, and this must not end the program.
  QApplication::setQuitOnLastWindowClosed(false);
  const QString folder = quarn::DataFolder();
  if (folder.isEmpty()) {
    quarn::WindowMessages().ShowPlainMessage(quarn::WhyNoDataFolder());
    return EXIT_FAILURE;
  }
  quarn::MakeDataFolder(folder);
  const QString ports = quarn::PortsFolder(folder);
  quarn::Program program(folder, quarn::CreateLineOpener(ports), quarn::CreatePortSource(ports),
                         std::make_unique<quarn::WindowMessages>(), std::make_unique<quarn::WaitCursor>());
  const quarn::FatalLimits limits(program);
  quarn::WindowStage stage(program, QApplication::arguments());
  if (StartUp(program, stage) != quarn::StartUpResult::Running) return EXIT_FAILURE;
  return QApplication::exec();
}
