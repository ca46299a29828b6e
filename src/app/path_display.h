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

/// A path for a place where not every text fits: whole, or else its first folder, "..." and as many of
/// its last parts as fit, or "..." and the file name, or the file name alone, with "..." in its middle
/// where it must be. When nothing fits at all: "...". `fits` says yes to a text that is shorter than one
/// it said yes to.
[[nodiscard]] QString ShortenPath(const QString& path, const std::function<bool(const QString&)>& fits,
                                  PathStyle style = kNativePaths);

}  // namespace quarn
