#include "base/bounds.h"

#include <QDir>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "base/printable.h"

namespace quarn {

namespace {

std::atomic<BoundsErrorHandler> g_handler{nullptr};
thread_local const QString* t_path = nullptr;

}  // namespace

QString Describe(const PassedLimit& passed) {
  QString text = QStringLiteral("%1 of %2 characters, at most %3 fit")
                     .arg(QLatin1String(passed.name))
                     .arg(passed.length)
                     .arg(passed.limit);
  if (passed.file.isEmpty()) return text;
  text += passed.line > 0 ? QStringLiteral(": line %1 of ").arg(passed.line) : QStringLiteral(": ");
  return text + Printable(QDir::toNativeSeparators(passed.file));
}

void FatalBoundsError(const char* limitName, qsizetype limit, qsizetype length, qsizetype line) {
  const PassedLimit passed{limitName, limit, length, t_path != nullptr ? *t_path : QString(), line};
  if (const BoundsErrorHandler handler = g_handler.load()) handler(passed);
  std::fprintf(stderr, "quarn: bounds error: %s\n", Describe(passed).toLocal8Bit().constData());
  std::fflush(stderr);
  std::abort();
}

BoundsFile::BoundsFile(const QString& path) : m_path(path), m_outer(std::exchange(t_path, &m_path)) {}

BoundsFile::~BoundsFile() { t_path = m_outer; }

BoundsErrorHandler SetBoundsErrorHandler(BoundsErrorHandler handler) { return g_handler.exchange(handler); }

}  // namespace quarn
