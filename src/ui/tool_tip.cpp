#include "ui/tool_tip.h"

#include <QFontMetrics>
#include <QScreen>
#include <QTextDocument>
#include <QToolTip>
#include <QWidget>
#include <algorithm>

#include "base/printable.h"

namespace quarn {
namespace {

/// The maximum margin that a style adds around the text.
constexpr int kSurroundings = 40;

QString OnOneLine(QString text) {
  constexpr char16_t kSpace = 0x20;
  constexpr char16_t kDelete = 0x7F;
  constexpr char16_t kPictures = 0x2400;  // of the control characters, in their order
  constexpr char16_t kPictureOfDelete = 0x2421;
  for (QChar& each : text) {
    if (each.unicode() < kSpace) {
      each = QChar(static_cast<char16_t>(kPictures + each.unicode()));
    } else if (each.unicode() == kDelete) {
      each = QChar(kPictureOfDelete);
    } else if (!IsPrintable(each.unicode()) && !each.isSurrogate()) {
      each = QChar::ReplacementCharacter;
    }
  }
  return text;
}

int RoomFor(const QWidget& widget, const QFontMetrics& metrics) {
  const int sensible = kMostToolTipCharacters * metrics.averageCharWidth();
  return std::min(sensible, widget.screen()->availableGeometry().width() - kSurroundings);
}

}  // namespace

void SetPlainToolTip(QWidget& widget, const QString& text, Qt::TextElideMode cut) {
  const QFontMetrics metrics(QToolTip::font());
  const QString shown = metrics.elidedText(OnOneLine(text), cut, RoomFor(widget, metrics));
  // A tool tip has no format setting: text that looks like markup would be treated as markup.
  widget.setToolTip(
      Qt::mightBeRichText(shown)
          ? QStringLiteral("<span style=\"white-space:pre\">%1</span>").arg(shown.toHtmlEscaped())
          : shown);
}

}  // namespace quarn
