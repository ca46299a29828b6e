#include "send/standard_output.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "terminal/render.h"
#include "terminal/system_encoding.h"

namespace quarn::send {
namespace {

bool Printed(bool done) {
  if (done) return true;
  const QString reason = QString::fromStdString(std::generic_category().message(errno));
  Complain(QStringLiteral("standard output: ") + reason);
  return false;
}

void HandleMessage(QtMsgType type, const QMessageLogContext& /*where*/, const QString& text) {
  if (type != QtDebugMsg && type != QtInfoMsg) Complain(text);
}

}  // namespace

bool Print(const QByteArray& bytes) {
  const auto size = static_cast<std::size_t>(bytes.size());
  return Printed(std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0);
}

bool EndOutput() { return Printed(std::fclose(stdout) == 0); }

void Complain(const QString& text) {
  const QByteArray line = SpellOut(ToSystemEncoding(text).value_or(text.toUtf8()));
  std::fprintf(stderr, "quarn-send: %s\n", line.constData());
}

void ComplainOfWarnings() { qInstallMessageHandler(HandleMessage); }

}  // namespace quarn::send
