#include "demo/demo_folder.h"

#include <QFile>
#include <filesystem>

#include "base/system_path.h"
#include "settings/data_folder.h"

// Q_INIT_RESOURCE declares a function of the global namespace and cannot stand in another.
static void InitDemo() { Q_INIT_RESOURCE(demo); }

namespace quarn {

DemoFolder::DemoFolder() {
  // Qt would take the topmost folder if there is none for temporary files.
  std::error_code error;
  const std::filesystem::path above = std::filesystem::temp_directory_path(error);
  if (error) {
    m_whyNot = QString::fromStdString(error.message());
    return;
  }
  m_folder.emplace(NameOf(above) + QStringLiteral("/quarn-demo-XXXXXX"));
  if (!m_folder->isValid()) {
    m_whyNot = m_folder->errorString();
    return;
  }
  InitDemo();
  const QString path = m_folder->path() + u'/';
  QFile settings(QStringLiteral(":/demo/demo.qrn"));
  const QString copy = WorkingSettingsFile(path);
  // A copy of a resource is read-only.
  if (!settings.copy(copy) || !QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner)) {
    m_whyNot = settings.errorString();
    return;
  }
  m_path = path;
}

QString DemoFolder::WhyNot() const {
  return QStringLiteral("The demo has no folder for its settings: %1").arg(m_whyNot);
}

}  // namespace quarn
