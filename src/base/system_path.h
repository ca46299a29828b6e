#pragma once

#include <QFile>
#include <QString>
#include <filesystem>
#include <type_traits>

/// Paths between Qt and the standard library, whose own conversions end the program if a name is no text. Any
/// thread.
namespace quarn {

/// Whether the system's names are UTF-16, and not bytes.
inline constexpr bool kNamesAreWide = std::is_same_v<std::filesystem::path::value_type, wchar_t>;

inline std::filesystem::path SystemPath(const QString& name) {
  if constexpr (kNamesAreWide) return name.toStdWString();
  return QFile::encodeName(name).toStdString();
}

/// What is no text has replacement characters, and so is the name of another file.
inline QString NameOf(const std::filesystem::path& path) {
  if constexpr (kNamesAreWide) return QString::fromStdWString(path.wstring());
  return QFile::decodeName(QByteArray::fromStdString(path.string()));
}

}  // namespace quarn
