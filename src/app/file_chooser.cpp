#include "app/file_chooser.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>
#include <QScreen>
#include <QStandardPaths>
#include <QTreeView>
#include <algorithm>
#include <memory>
#include <utility>

#include "app/dialog_notes.h"
#include "app/platform.h"
#include "base/printable.h"
#include "ui/box.h"
#include "ui/placement.h"

namespace quarn {
namespace {

/// Qt's dialog, which may stand for the system's.
class Dialog {
 public:
  Dialog(QWidget* owner, const QString& title) : m_dialog(std::make_unique<QFileDialog>(owner, title)) {}
  ~Dialog() {
    m_notes.KeepOthers();
    m_dialog.reset();
  }
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;
  [[nodiscard]] QFileDialog& Get() const { return *m_dialog; }

 private:
  DialogNotesUndone m_notes;
  std::unique_ptr<QFileDialog> m_dialog;
};

/// Room for every column of Qt's own dialog, on a screen that is large enough.
constexpr QRect kChooserUnits{0, 0, 440, 240};

/// Whether it is the system's dialog, and not Qt's own.
bool IsOfSystem(const QFileDialog& dialog) {
  return dialog.findChild<QTreeView*>(QStringLiteral("treeView")) == nullptr;
}

/// Sets the width of the columns of Qt's own dialog, after the names, to that of their texts.
void FitColumns(QFileDialog& dialog) {
  if (IsOfSystem(dialog)) return;
  const auto* files = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
  enum { Size = 1, Type, Modified };
  const QDateTime longest(QDate(2000, 12, 30), QTime(23, 59, 59));
  const QString margin = QStringLiteral("www");
  for (const auto& [column, text] : {std::pair{Size, QStringLiteral("1023.99 KiB")},
                                     {Type, QStringLiteral("plain text document")},
                                     {Modified, QLocale::system().toString(longest, QLocale::ShortFormat)}}) {
    const int needed = files->fontMetrics().horizontalAdvance(text + margin);
    files->header()->resizeSection(column, std::max(needed, files->header()->sectionSize(column)));
  }
  // Its buttons are at the right, and must not lie outside of a small screen.
  const QSize room = dialog.screen()->availableGeometry().size().shrunkBy(FrameOf(dialog));
  dialog.resize(MapDialogUnits(dialog.font(), kChooserUnits).size().boundedTo(room));
}

/// A program started by its shortcut runs in its own folder, where nobody keeps files.
QString FolderAtFirst() {
  QString working = QDir::currentPath();
  if (QDir(working) != QDir(QCoreApplication::applicationDirPath())) return working;
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

void PutQuestion(QFileDialog& dialog, const FileQuestion& question, const QString& folder) {
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setNameFilters(question.filters);
  dialog.setDefaultSuffix(question.suffix);
  FitColumns(dialog);
  dialog.setDirectory(folder);
  // With the folder given separately: some systems' dialogs use only the name of a selected path.
  if (!question.initialName.isEmpty()) {
    dialog.selectFile(QDir(folder).filePath(QFileInfo(question.initialName).fileName()));
  }
}

}  // namespace

QString FileChooserDialog::Ask(QFileDialog& dialog, const FileQuestion& question) {
  QString folder = question.folder;
  if (folder.isEmpty() && QFileInfo(question.initialName).isAbsolute()) {
    folder = QFileInfo(question.initialName).absolutePath();
  }
  if (folder.isEmpty()) folder = m_lastFolder;
  if (folder.isEmpty()) folder = FolderAtFirst();
  PutQuestion(dialog, question, folder);
  // The file that was accepted. While Qt's own dialog asks whether to overwrite it, a folder read meanwhile
  // can change the name in its field.
  QString path;
  QObject::connect(&dialog, &QFileDialog::filesSelected, &dialog,
                   [&path](const QStringList& files) { path = files.value(0); });
  // The system's own dialog needs a parent to be in front of. The owner cannot be deleted meanwhile.
  const BoxOver over(m_owner);
  if (dialog.exec() != QDialog::Accepted) return {};
  if (path.isEmpty()) path = dialog.selectedFiles().value(0);
  m_lastFolder = QFileInfo(path).absolutePath();
  return path;
}

QString FileChooserDialog::AskOpenFile(const FileQuestion& question) {
  const Dialog owned(m_owner, question.title);
  QFileDialog& dialog = owned.Get();
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
  // A file without a suffix that was selected from the list is used unchanged.
  QObject::connect(&dialog, &QFileDialog::currentChanged, &dialog, [&](const QString& path) {
    const QFileInfo info(path);
    const bool bare = info.isFile() && !info.fileName().contains(u'.');
    dialog.setDefaultSuffix(bare ? QString() : question.suffix);
  });
  return Ask(dialog, question);
}

QString FileChooserDialog::AskSaveFile(const FileQuestion& question) {
  if (SystemFileDialogAddsSuffix() || !IsOfSystem(Dialog(m_owner, question.title).Get()))
    return AskSaveFileOnce(question);
  return AskSaveFileAndAddSuffix(
      question, [this](const FileQuestion& next) { return AskSaveFileOnce(next); }, m_messages);
}

QString FileChooserDialog::AskSaveFileOnce(const FileQuestion& question) {
  const Dialog owned(m_owner, question.title);
  QFileDialog& dialog = owned.Get();
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  return Ask(dialog, question);
}

QString AskSaveFileAndAddSuffix(const FileQuestion& question,
                                const std::function<QString(const FileQuestion&)>& dialog,
                                MessageOperations& messages) {
  FileQuestion next = question;
  next.suffix.clear();
  for (;;) {
    QString typed = dialog(next);
    const QFileInfo file(typed);
    if (typed.isEmpty() || file.fileName().contains(u'.')) return typed;
    QString path = typed + u'.' + question.suffix;
    if (!QFileInfo::exists(path)) return path;
    const QString name = Printable(QFileInfo(path).fileName());
    if (messages.AskYesNo(QStringLiteral(": Confirmation"), QString(),
                          QStringLiteral("\"%1\" already exists.").arg(name),
                          QStringLiteral("Do you want to replace it?"), AnswerByDefault::Refuse)) {
      return path;
    }
    next.initialName = path;
    next.folder = file.absolutePath();
  }
}

}  // namespace quarn
