#include "app/qrn_file.h"

#include <QFile>
#include <QFileInfo>
#include <optional>

#include "settings/key_store.h"
#include "settings/settings_text.h"

namespace quarn {
namespace {

constexpr qint64 kLargestQrnFile = 102400;  // bytes

}  // namespace

int CheckQrnFile(const QString& path) {
  const PathKind kind = ClassifyPath(path);
  if (kind == PathKind::Nothing) return kQrnNotFound;
  if (kind == PathKind::File && QFileInfo(path).size() > kLargestQrnFile) return kQrnTooLarge;
  QFile file(path);
  if (kind == PathKind::Folder || !file.open(QIODevice::ReadOnly)) return kQrnNoFormat;
  // One byte more than allowed: the file may have grown since it was measured.
  const QByteArray bytes = file.read(kLargestQrnFile + 1);
  if (bytes.size() > kLargestQrnFile) return kQrnTooLarge;
  const std::optional<QString> text = DecodeSettingsText(bytes);
  const bool complete = text && text->contains(u".BEGIN") && text->contains(u".END");
  return complete ? kQrnValid : kQrnNoFormat;
}

void TellQrnFailure(int code, MessageOperations& messages) {
  QString first;
  QString second;
  if (code == kQrnNotFound) {
    first = QStringLiteral("QRN file was not found.");
    second = QStringLiteral("Failed to load settings from QRN file.");
  } else if (code > 0) {
    first = QStringLiteral("Invalid file format.");
    second = QStringLiteral("Could not load file contents.");
  }
  messages.ShowErrorMessage(QStringLiteral(": Error"), QString(), first, second);
}

QString LoadQrnFile(const QString& path, MessageOperations& messages) {
  const int code = CheckQrnFile(path);
  if (code == kQrnValid) return path;
  TellQrnFailure(code, messages);
  return {};
}

}  // namespace quarn
