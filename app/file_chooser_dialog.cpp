#include "app/file_chooser_dialog.h"

#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>
#include <QTreeView>
#include <algorithm>
#include <utility>

#include "ui/placement.h"

namespace quarn {
namespace {

/// Room for every column of Qt's own dialog.
constexpr QRect kChooserUnits{0, 0, 440, 240};

/// Gives the columns of Qt's own dialog, behind the names, the width that their texts need.
void FitColumns(QFileDialog& dialog) {
  const auto* files = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
  if (files == nullptr) return;  // the system's dialog
  enum { Size = 1, Type, Modified };
  const QDateTime longest(QDate(2000, 12, 30), QTime(23, 59, 59));
  const QString margin = QStringLiteral("www");
  for (const auto& [column, text] : {std::pair{Size, QStringLiteral("1023.99 KiB")},
                                     {Type, QStringLiteral("plain text document")},
                                     {Modified, QLocale::system().toString(longest, QLocale::ShortFormat)}}) {
    const int needed = files->fontMetrics().horizontalAdvance(text + margin);
    files->header()->resizeSection(column, std::max(needed, files->header()->sectionSize(column)));
  }
  dialog.resize(MapDialogUnits(dialog.font(), kChooserUnits).size());
}

void PutQuestion(QFileDialog& dialog, const FileQuestion& question) {
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setNameFilters(question.filters);
  dialog.setDefaultSuffix(question.suffix);
  FitColumns(dialog);
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
