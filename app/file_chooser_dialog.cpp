#include "app/file_chooser_dialog.h"

#include <QFileDialog>
#include <QFileInfo>

namespace quarn {
namespace {

void PutQuestion(QFileDialog& dialog, const FileQuestion& question) {
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setNameFilters(question.filters);
  dialog.setDefaultSuffix(question.suffix);
  if (!question.initialName.isEmpty()) dialog.selectFile(question.initialName);
}

QString Answer(QFileDialog& dialog) {
  if (dialog.exec() != QDialog::Accepted) return {};
  return dialog.selectedFiles().value(0);
}

}  // namespace

QString FileChooserDialog::AskOpenFile(const FileQuestion& question) {
  QFileDialog dialog(m_owner, question.title);
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
  PutQuestion(dialog, question);
  // A file without a suffix that was picked from the list is meant as it stands.
  QObject::connect(&dialog, &QFileDialog::currentChanged, &dialog, [&](const QString& path) {
    const QFileInfo info(path);
    const bool bare = info.isFile() && !info.fileName().contains(u'.');
    dialog.setDefaultSuffix(bare ? QString() : question.suffix);
  });
  return Answer(dialog);
}

QString FileChooserDialog::AskSaveFile(const FileQuestion& question) {
  QFileDialog dialog(m_owner, question.title);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  PutQuestion(dialog, question);
  return Answer(dialog);
}

}  // namespace quarn
