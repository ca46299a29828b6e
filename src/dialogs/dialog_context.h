#pragma once

#include <QString>

#include "base/message_operations.h"
#include "base/pause.h"
#include "dialogs/shared_state.h"
#include "serial/open_port.h"
#include "serial/port_connection.h"
#include "serial/port_source.h"
#include "settings/settings_record.h"

namespace quarn {

/// The objects that the dialogs of settings and ports use. All of them outlive the dialogs. User-interface
/// thread only.
struct DialogContext {
  SettingsRecord& settings;
  const QString& workingSettingsFile;
  PortConnection& connection;
  SharedState& state;
  PortSource& portSource;
  PortEnvironment environment;
  Pause& pause;

  [[nodiscard]] MessageOperations& Messages() const { return environment.messages; }
};

}  // namespace quarn
