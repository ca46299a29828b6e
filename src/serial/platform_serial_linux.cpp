#include <QDir>
#include <QFile>

#include "serial/link_path_linux.h"
#include "serial/open_line_linux.h"
#include "serial/platform_serial.h"
#include "serial/port_folder_linux.h"
#include "serial/port_source_linux.h"

namespace quarn {

std::unique_ptr<SerialLineOpener> CreateLineOpener(const QString& portsFolder) {
  return std::make_unique<LinuxLineOpener>(portsFolder);
}

std::unique_ptr<PortSource> CreatePortSource(const QString& portsFolder) {
  return std::make_unique<LinuxPortSource>(portsFolder);
}

QString FindPortDevice(const QString& portsFolder, const QString& port) {
  if (PortLinkNumber(QFile::encodeName(port).toStdString())) return ResolvePort(portsFolder, port);
  const QDir folder = port.contains(u'/') ? QDir::current() : QDir(QStringLiteral("/dev"));
  const QString path = QDir::cleanPath(folder.absoluteFilePath(port));
  const ResolvedPath end = ResolvePath({}, QFile::encodeName(path).toStdString());
  if (end.node.empty() || !IsTerminalDevice(end.status, SystemRoots().sys)) return {};
  return QFile::decodeName(QByteArray::fromStdString(end.node));
}

OpenResult OpenPortDevice(const QString& device) { return OpenTerminalDevice(device); }

/// Opening a line turns the latency of its adapter down.
std::optional<std::chrono::milliseconds> LatencyTimerOf(const QString& /*port*/) { return std::nullopt; }

QString HowToChangePortNumber(const QString& portsFolder) {
  return QStringLiteral("A port has the name of its link in %1, which can be renamed.")
      .arg(QDir::toNativeSeparators(portsFolder));
}

}  // namespace quarn
