#include "system/e2e/port_links.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <array>
#include <cstdio>

namespace quarn::test {

PortLinks::PortLinks(const QString& folder) : m_folder(folder) { QDir().mkpath(folder); }

PortLinks::~PortLinks() { RemoveSilent(); }

bool PortLinks::Add(const QString& name, const QString& device) {
  Remove(name);
  return QFile::link(device, m_folder + QLatin1Char('/') + name);
}

bool PortLinks::Lead(const QString& name, const QString& device) {
  const QString beside = m_folder + QStringLiteral("/beside");
  return QFile::link(device, beside) &&
         ::rename(QFile::encodeName(beside).constData(),
                  QFile::encodeName(m_folder + QLatin1Char('/') + name).constData()) == 0;
}

bool PortLinks::Remove(const QString& name) { return QFile::remove(m_folder + QLatin1Char('/') + name); }

QStringList PortLinks::Names() const {
  return QDir(m_folder).entryList({QStringLiteral("COM*")},
                                  QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System, QDir::Name);
}

bool PortLinks::AddSilent(int count, int first) {
  for (int i = 0; i < count; ++i)
    if (!AddOneSilent(QStringLiteral("COM%1").arg(first + i))) return false;
  return true;
}

bool PortLinks::AddOneSilent(const QString& name) {
  const int descriptor = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return false;
  m_silent.push_back({name, descriptor});
  std::array<char, 128> device{};
  return grantpt(descriptor) == 0 && unlockpt(descriptor) == 0 &&
         ptsname_r(descriptor, device.data(), device.size()) == 0 &&
         Add(name, QString::fromLocal8Bit(device.data()));
}

void PortLinks::RemoveSilent() {
  for (const Silent& each : m_silent) {
    Remove(each.name);
    close(each.descriptor);
  }
  m_silent.clear();
}

}  // namespace quarn::test
