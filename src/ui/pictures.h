#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>

namespace quarn {

/// The numbers that identify the pictures.
inline constexpr int kIconResource = 128;
inline constexpr int kWarningResource = 142;
inline constexpr int kLogoResource = 160;

/// Makes the pictures readable. Every function below does this itself; repeated calls are cheap.
void LoadResources();

// Each picture is stored in several sizes; only the best one is decoded. The result fills `room` (in
// device-independent pixels) as far as its proportions allow. User-interface thread only.

/// The square logo of the main dialog and the splash (160).
QPixmap Logo(QSize room, double devicePixelRatio);
/// The error box's picture (142), nine wide to eight high.
QPixmap WarningPicture(QSize room, double devicePixelRatio);
/// The windows' icon (128), from 16 to 64 pixels.
QIcon ApplicationIcon();

}  // namespace quarn
