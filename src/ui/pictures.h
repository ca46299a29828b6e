#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>

namespace quarn {

/// The numbers under which the pictures are known.
inline constexpr int kIconResource = 128;
inline constexpr int kWarningResource = 142;
inline constexpr int kLogoResource = 160;

/// Makes the pictures readable. Every function below does so itself; calling it again costs nothing.
void LoadResources();

// Each picture is kept in several sizes; the one that fits is decoded, and no other. What comes back fills
// `room` (in device-independent pixels) as far as its proportions allow. User-interface thread only.

/// The square logo of the main dialog and the splash (160).
QPixmap Logo(QSize room, double devicePixelRatio);
/// The error box's picture (142), nine wide to eight high.
QPixmap WarningPicture(QSize room, double devicePixelRatio);
/// The windows' icon (128), from 16 to 64 pixels.
QIcon ApplicationIcon();

}  // namespace quarn
