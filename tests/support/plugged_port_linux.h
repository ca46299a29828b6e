#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QString>

#include "serial/serial_fixtures.h"

namespace quarn::test {

/// Makes this line a port of the folder.
inline void PlugPort(const QString& portsFolder, const QString& port, const PseudoTerminal& line) {
  ASSERT_TRUE(QFile::link(QString::fromStdString(line.Node()), portsFolder + QLatin1Char('/') + port));
}

/// Removes the port from the folder. False if there was none.
inline bool UnplugPort(const QString& portsFolder, const QString& port) {
  return QFile::remove(portsFolder + QLatin1Char('/') + port);
}

}  // namespace quarn::test
