#pragma once

#include <QString>
#include <functional>

namespace quarn {

enum class PathStyle {
  Slashes,               ///< parts end at "/"
  SlashesAndBackslashes  ///< at "/" or "\"
};

#ifdef Q_OS_WIN
inline constexpr PathStyle kNativePaths = PathStyle::SlashesAndBackslashes;
#else
inline constexpr PathStyle kNativePaths = PathStyle::Slashes;
#endif

/// A path shortened to fit: complete; or its first folder, "..." and as many of its last parts as fit; or
/// "..." and the file name; or the file name alone, with "..." in its middle if necessary; or "..." if
/// nothing fits. If `fits` accepts a text, it must accept every shorter one.
[[nodiscard]] QString ShortenPath(const QString& path, const std::function<bool(const QString&)>& fits,
                                  PathStyle style = kNativePaths);

}  // namespace quarn
