#pragma once

#include <QString>
#include <functional>

#include "base/message_operations.h"
#include "dialogs/shared_state.h"
#include "serial/open_port.h"
#include "serial/port_connection.h"
#include "serial/port_source.h"
#include "settings/settings_record.h"

namespace quarn {

/// A short wait of the user-interface thread, for example until a device is ready. Returns after `ms`
/// milliseconds.
using Pause = std::function<void(int ms)>;

/// The objects that the dialogs of settings and ports use. All of them outlive the dialogs. User-interface
/// thread only.
struct DialogContext {
  SettingsRecord& settings;
  const QString& workingSettingsFile;
  PortConnection& connection;
  SharedState& state;
  PortSource& portSource;
  PortEnvironment environment;
  Pause pause;

  [[nodiscard]] MessageOperations& Messages() const { return environment.messages; }
};

}  // namespace quarn
