#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>

#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/settings_text.h"

// What one change of a setting costs beyond the disk's own flush: UpdateValue less WriteFlushRename, which
// puts the same bytes in place with nothing but system calls. Run it in a folder on the disk in question.
namespace quarn {
namespace {

/// A text of 16382 characters whose MEM9 line is the last but one, so that all is searched.
QString FullSizeText() {
  const QString line = QString(63, u'#') + u'\n';
  QString text = QStringLiteral(".BEGIN\n") + line.repeated(255);
  text += QString(kMaxFileCharacters - 1 - text.size() - 12, u'#') + QStringLiteral("\nMEM9=a\n.END");
  return text;
}

class File {
 public:
  File() : m_folder(QDir::currentPath() + QStringLiteral("/quarn-bench-XXXXXX")) {
    WriteWholeText(Path(), FullSizeText());
  }
  [[nodiscard]] QString Path() const { return m_folder.filePath(QStringLiteral("Quarn.ini")); }

 private:
  QTemporaryDir m_folder;
};

void UpdateFullSizeFile(benchmark::State& state) {
  const File file;
  bool odd = false;
  for (auto _ : state) {
    odd = !odd;
    if (!UpdateValue(file.Path(), keys::kMem[9], odd ? QStringLiteral("b") : QStringLiteral("a"))) {
      state.SkipWithError("update refused");
    }
  }
  const QString left = odd ? QStringLiteral("b") : QStringLiteral("a");
  if (ReadValue(file.Path(), keys::kMem[9]) != left) state.SkipWithError("nothing was written");
}
BENCHMARK(UpdateFullSizeFile)->Unit(benchmark::kMicrosecond)->UseRealTime();

void WriteFlushRename(benchmark::State& state) {
  const File file;
  const QByteArray bytes = EncodeSettingsText(FullSizeText());
  const QByteArray target = QFile::encodeName(file.Path());
  const QByteArray beside = target + ".new";
  for (auto _ : state) {
    const int fd = open(beside.constData(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0600);
    const bool written = fd >= 0 && write(fd, bytes.constData(), static_cast<std::size_t>(bytes.size())) ==
                                        static_cast<ssize_t>(bytes.size());
    if (!written || fsync(fd) != 0 || close(fd) != 0 ||
        std::rename(beside.constData(), target.constData()) != 0) {
      state.SkipWithError("the disk refused");
      break;
    }
  }
}
BENCHMARK(WriteFlushRename)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// The share of an update that no disk takes part in.
void DecodeUpdateEncode(benchmark::State& state) {
  const QByteArray bytes = EncodeSettingsText(FullSizeText());
  for (auto _ : state) {
    const std::optional<QString> text = DecodeSettingsText(bytes);
    const ValueUpdate update = UpdateText(*text, {{keys::kMem[9], QStringLiteral("b")}});
    benchmark::DoNotOptimize(EncodeSettingsText(*update.newText));
  }
}
BENCHMARK(DecodeUpdateEncode)->Unit(benchmark::kMicrosecond);

void LoadOneValue(benchmark::State& state) {
  const File file;
  for (auto _ : state) benchmark::DoNotOptimize(ReadValue(file.Path(), keys::kMem[9]));
}
BENCHMARK(LoadOneValue)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quarn
