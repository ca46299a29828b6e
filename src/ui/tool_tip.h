#pragma once

#include <QString>

class QWidget;

namespace quarn {

/// Sets the text as the widget's tool tip, unchanged: markup is shown as text, a character that would break
/// the line or change its direction is shown as a sign, and a text too long for one line is cut with an
/// ellipsis, at the end or as `cut` says. Never wider than kMostToolTipCharacters average characters, nor
/// than the widget's screen. An empty text removes the tool tip.
void SetPlainToolTip(QWidget& widget, const QString& text, Qt::TextElideMode cut = Qt::ElideRight);

inline constexpr int kMostToolTipCharacters = 160;

}  // namespace quarn
