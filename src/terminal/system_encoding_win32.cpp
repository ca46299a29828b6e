#include <windows.h>

#include "terminal/system_encoding.h"

namespace quarn {
namespace {

/// If the code page is UTF-8, other flags are needed, and replaced characters are not reported.
bool IsUtf8() { return GetACP() == CP_UTF8; }

}  // namespace

std::optional<QByteArray> ToSystemEncoding(QStringView text) {
  if (text.isEmpty()) return QByteArray();
  const auto* const characters = reinterpret_cast<const wchar_t*>(text.utf16());
  const int count = static_cast<int>(text.size());
  const DWORD flags = IsUtf8() ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  BOOL replaced = FALSE;
  BOOL* const whether = IsUtf8() ? nullptr : &replaced;
  const int size = WideCharToMultiByte(CP_ACP, flags, characters, count, nullptr, 0, nullptr, whether);
  if (size <= 0 || replaced != FALSE) return std::nullopt;
  QByteArray bytes(size, '\0');
  const int written =
      WideCharToMultiByte(CP_ACP, flags, characters, count, bytes.data(), size, nullptr, whether);
  if (written != size || replaced != FALSE) return std::nullopt;
  return bytes;
}

std::optional<QString> FromSystemEncoding(const QByteArray& bytes) {
  if (bytes.isEmpty()) return QString();
  const int count = static_cast<int>(bytes.size());
  const int size = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes.constData(), count, nullptr, 0);
  if (size <= 0) return std::nullopt;
  QString text(size, Qt::Uninitialized);
  if (MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes.constData(), count,
                          reinterpret_cast<wchar_t*>(text.data()), size) != size) {
    return std::nullopt;
  }
  return text;
}

}  // namespace quarn
