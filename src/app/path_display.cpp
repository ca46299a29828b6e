#include "app/path_display.h"

#include <QList>

namespace quarn {
namespace {

const QString kGap = QStringLiteral("...");

bool IsSeparator(QChar character, PathStyle style) {
  return character == u'/' || (character == u'\\' && style == PathStyle::SlashesAndBackslashes);
}

/// The ends of the parts: every separator except those at the start of the path.
QList<qsizetype> PartEnds(const QString& path, PathStyle style) {
  qsizetype at = 0;
  while (at < path.size() && IsSeparator(path[at], style)) ++at;
  QList<qsizetype> ends;
  for (; at < path.size(); ++at) {
    if (IsSeparator(path[at], style)) ends.append(at);
  }
  return ends;
}

/// The name without `dropped` characters in its middle; never splits a surrogate pair.
QString WithoutMiddle(const QString& name, qsizetype dropped) {
  const qsizetype kept = name.size() - dropped;
  qsizetype left = kept - kept / 2;
  qsizetype right = kept / 2;
  if (left > 0 && name[left - 1].isHighSurrogate()) --left;
  if (right > 0 && name[name.size() - right].isLowSurrogate()) --right;
  return name.left(left) + kGap + name.right(right);
}

QString ShortenName(const QString& name, const std::function<bool(const QString&)>& fits) {
  if (fits(name)) return name;
  for (qsizetype dropped = 1; dropped < name.size(); ++dropped) {
    QString shorter = WithoutMiddle(name, dropped);
    if (fits(shorter)) return shorter;
  }
  return kGap;
}

}  // namespace

QString ShortenPath(const QString& path, const std::function<bool(const QString&)>& fits, PathStyle style) {
  if (fits(path)) return path;
  const QList<qsizetype> ends = PartEnds(path, style);
  for (qsizetype i = 1; i < ends.size(); ++i) {
    QString shorter = path.left(ends.first() + 1) + kGap + path.mid(ends[i]);
    if (fits(shorter)) return shorter;
  }
  if (!ends.isEmpty()) {
    QString nameAlone = kGap + path.mid(ends.last());
    if (fits(nameAlone)) return nameAlone;
  }
  qsizetype nameStart = path.size();
  while (nameStart > 0 && !IsSeparator(path[nameStart - 1], style)) --nameStart;
  return ShortenName(path.mid(nameStart), fits);
}

}  // namespace quarn
