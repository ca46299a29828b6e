#pragma once

#include <QString>

class QWidget;

namespace quarn {

/// Gives the widget this text as its tool tip, as it stands: markup in it is text, a character that would
/// break the line or turn its direction is shown as a sign, and what is too long for one line is cut with an
/// ellipsis, at the end or where `cut` says. Never wider than kMostToolTipCharacters average characters, nor
/// than the widget's screen. An empty text takes the tool tip away.
void SetPlainToolTip(QWidget& widget, const QString& text, Qt::TextElideMode cut = Qt::ElideRight);

inline constexpr int kMostToolTipCharacters = 160;

}  // namespace quarn
