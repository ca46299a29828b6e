#include <QGuiApplication>

#include "ui/window_system.h"

namespace quarn {

bool IsOnWayland() { return QGuiApplication::platformName().startsWith(u"wayland"); }

bool MayPlaceWindows() { return !IsOnWayland() && qEnvironmentVariableIsEmpty("SWAYSOCK"); }

}  // namespace quarn
