#include "app/fatal_limits.h"

#include <QCoreApplication>
#include <QDir>
#include <QThread>
#include <utility>

#include "base/bounds.h"
#include "base/printable.h"
#include "serial/open_port.h"

namespace quarn {
namespace {

Program* g_program = nullptr;

/// Splits a long name into pieces between which a box may break the line.
QString Breakable(const QString& name) {
  constexpr qsizetype kPiece = 80;
  constexpr char16_t kZeroWidthSpace = 0x200B;
  QString broken;
  for (qsizetype start = 0; start < name.size(); start += kPiece) {
    if (start > 0) broken += QChar(kZeroWidthSpace);
    broken += QStringView(name).mid(start, kPiece);
  }
  return broken;
}

QString TextOf(PassedLimit passed) {
  const QString file = std::exchange(passed.file, QString());
  QString text =
      QStringLiteral("Quarn cannot go on and ends: a limit has been passed.\n\n%1.").arg(Describe(passed));
  if (!file.isEmpty())
    text += QStringLiteral("\n\nFile: ") + Breakable(Printable(QDir::toNativeSeparators(file)));
  if (passed.line > 0) text += QStringLiteral("\nLine: %1").arg(passed.line);
  return text;
}

void TellBeforeTheEnd(const PassedLimit& passed) {
  if (QThread::currentThread() != QCoreApplication::instance()->thread()) return;
  // Only once: another limit passed while the box is open ends the program at once.
  Program* program = std::exchange(g_program, nullptr);
  if (program == nullptr) return;
  ClosePort(program->connection);
  program->connection.connected.Update(PortChange::Closed);
  // Behind the box no ports are listed and none is connected.
  program->state.portBeingChanged = true;
  program->messages->ShowPlainMessage(TextOf(passed));
}

}  // namespace

FatalLimits::FatalLimits(Program& program) {
  g_program = &program;
  SetBoundsErrorHandler(TellBeforeTheEnd);
}

FatalLimits::~FatalLimits() {
  SetBoundsErrorHandler(nullptr);
  g_program = nullptr;
}

}  // namespace quarn
