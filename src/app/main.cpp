#include <QApplication>
#include <QSettings>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "app/ending_signals.h"
#include "app/fatal_limits.h"
#include "app/file_argument.h"
#include "app/platform.h"
#include "app/program.h"
#include "app/start_up.h"
#include "app/window_stage.h"
#include "demo/demo_folder.h"
#include "demo/demo_ports.h"
#include "serial/open_port.h"
#include "serial/platform_serial.h"
#include "settings/data_folder.h"
#include "terminal/standard_streams.h"
#include "ui/box_order.h"
#include "ui/control_style.h"
#include "ui/pictures.h"
#include "ui/wait_cursor.h"
#include "ui/whole_pixels.h"
#include "ui/window_messages.h"

namespace {

QStringList ArgumentsOf(int argc, char* argv[]) {
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
  return arguments;
}

/// What the program works on.
struct Workplace {
  QString folder;  ///< empty if there is none
  QString whyNoFolder{};
  std::unique_ptr<quarn::SerialLineOpener> opener{};
  std::unique_ptr<quarn::PortSource> ports{};
};

Workplace OfUser() {
  const QString folder = quarn::DataFolder();
  if (folder.isEmpty()) return {folder, quarn::WhyNoDataFolder()};
  quarn::MakeDataFolder(folder);
  const QString ports = quarn::PortsFolder(folder);
  return {folder, {}, quarn::CreateLineOpener(ports), quarn::CreatePortSource(ports)};
}

Workplace OfDemo(const quarn::DemoFolder& demo) {
  return {demo.Path(), demo.WhyNot(), std::make_unique<quarn::DemoLineOpener>(),
          std::make_unique<quarn::DemoPortSource>()};
}

/// Shows the windows until the person, or a signal, ends the program. Returns the exit status.
int Run(Workplace place, const QStringList& arguments, std::optional<quarn::DemoFolder>& demo) {
  quarn::Program program(place.folder, std::move(place.opener), std::move(place.ports),
                         std::make_unique<quarn::WindowMessages>(), std::make_unique<quarn::WaitCursor>());
  const quarn::FatalLimits limits(program);
  quarn::WindowStage stage(program, arguments);
  // Nobody is asked. No setting is lost, because what a window changes is in the file at once.
  const quarn::EndingSignals signals([&] {
    ClosePort(program.connection);
    stage.EndRequests();
    demo.reset();
  });
  if (StartUp(program, stage) != quarn::StartUpResult::Running) return EXIT_FAILURE;
  return QApplication::exec();
}

}  // namespace

int main(int argc, char* argv[]) {
  quarn::OccupyStandardStreams();
  const QStringList arguments = ArgumentsOf(argc, argv);
  if (const auto status = quarn::AnswerAtOnce(arguments)) return *status;
  auto session = std::make_unique<quarn::DesktopSession>(arguments);
  const QApplication application(argc, argv);
  session.reset();
  // All texts are English.
  QApplication::setLayoutDirection(Qt::LeftToRight);
  const std::unique_ptr<quarn::ModalOrder> order = quarn::KeepModalInFront();
  quarn::UseVisibleOutlines();
  quarn::KeepControlsWhole();
  QApplication::setWindowIcon(quarn::ApplicationIcon());
  // Message boxes close before the main dialog exists, and this must not end the program.
  QApplication::setQuitOnLastWindowClosed(false);
  std::optional<quarn::DemoFolder> demo;
  if (quarn::IsDemo(arguments)) {
    demo.emplace();
    // Qt's own file dialog notes there where it was.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, demo->Path());
  }
  Workplace place = demo ? OfDemo(*demo) : OfUser();
  if (place.folder.isEmpty()) {
    quarn::WindowMessages().ShowPlainMessage(place.whyNoFolder);
    return EXIT_FAILURE;
  }
  return Run(std::move(place), QApplication::arguments(), demo);
}
