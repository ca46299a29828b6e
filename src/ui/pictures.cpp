#include "ui/pictures.h"

#include <QImageReader>
#include <QString>
#include <array>
#include <cmath>
#include <span>

// Q_INIT_RESOURCE declares a function of the global namespace and cannot stand in another.
static void InitPictures() { Q_INIT_RESOURCE(pictures); }

namespace quarn {
namespace {

/// Each window sends all sizes to the window manager, pixel by pixel: larger ones delay every window. Larger
/// icons come from the package and from the Windows program's own resources.
constexpr std::array kIconSides{16, 32, 48, 64};
constexpr std::array kLogoWidths{64, 96, 128, 192};
constexpr std::array kWarningWidths{36, 54, 72, 108};
constexpr QSize kLogoShape{1, 1};
constexpr QSize kWarningShape{9, 8};

/// With the format given, Qt loads no plugin to detect it: start-up waits for its pictures.
QPixmap Read(const char* name, int width) {
  QImageReader reader(QStringLiteral(":/pictures/%1-%2.png").arg(QLatin1String(name)).arg(width), "png");
  reader.setAutoDetectImageFormat(false);
  return QPixmap::fromImageReader(&reader);
}

/// The smallest that need not be enlarged; the largest if all are too small.
int WidthToLoad(std::span<const int> widths, int wanted) {
  for (const int width : widths) {
    if (width >= wanted) return width;
  }
  return widths.back();
}

QPixmap Fitted(const char* name, std::span<const int> widths, QSize shape, QSize room, double ratio) {
  LoadResources();
  const QSize pixels{static_cast<int>(std::lround(room.width() * ratio)),
                     static_cast<int>(std::lround(room.height() * ratio))};
  const QSize wanted = shape.scaled(pixels, Qt::KeepAspectRatio);
  QPixmap picture = Read(name, WidthToLoad(widths, wanted.width()));
  if (picture.size() != wanted) {
    picture = picture.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  }
  picture.setDevicePixelRatio(ratio);
  return picture;
}

}  // namespace

void LoadResources() { [[maybe_unused]] static const bool loaded = (InitPictures(), true); }

QPixmap Logo(QSize room, double devicePixelRatio) {
  return Fitted("logo", kLogoWidths, kLogoShape, room, devicePixelRatio);
}

QPixmap WarningPicture(QSize room, double devicePixelRatio) {
  return Fitted("warning", kWarningWidths, kWarningShape, room, devicePixelRatio);
}

QIcon ApplicationIcon() {
  LoadResources();
  QIcon icon;
  for (const int side : kIconSides) icon.addPixmap(Read("icon", side));
  return icon;
}

}  // namespace quarn
