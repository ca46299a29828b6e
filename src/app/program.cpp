#include "app/program.h"

#include <utility>

#include "settings/data_folder.h"

namespace quarn {

Program::Program(QString folder, std::unique_ptr<SerialLineOpener> lineOpener,
                 std::unique_ptr<PortSource> source, std::unique_ptr<MessageOperations> messageOperations,
                 std::unique_ptr<WaitIndicator> indicator)
    : dataFolder(std::move(folder)),
      workingSettingsFile(WorkingSettingsFile(dataFolder)),
      opener(std::move(lineOpener)),
      portSource(std::move(source)),
      messages(std::move(messageOperations)),
      waitIndicator(std::move(indicator)),
      engine(connection) {}

DialogContext Program::Context(Pause pause) {
  return {.settings = settings,
          .workingSettingsFile = workingSettingsFile,
          .connection = connection,
          .state = state,
          .portSource = *portSource,
          .environment = Environment(),
          .pause = std::move(pause)};
}

}  // namespace quarn
