#pragma once

#include <QFont>
#include <QString>

namespace quarn {

/// Whether this font, or one that stands in for its missing letters, has every character of the text. The
/// first question may take long, because all fonts of the system are searched.
bool CanShow(const QFont& font, const QString& text);

}  // namespace quarn
