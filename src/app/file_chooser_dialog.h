#pragma once

#include "app/file_chooser.h"

class QFileDialog;
class QWidget;

namespace quarn {

/// The system's file dialog where it has one, or Qt's. It begins in the question's folder, else where the
/// last file was chosen, else in the working folder, or, for a program that was started in its own folder, in
/// that of the person's documents.
class FileChooserDialog final : public FileChooser {
 public:
  /// The dialogs are modal to the window `owner` (not owned; may be null), which outlives them.
  explicit FileChooserDialog(QWidget* owner) : m_owner(owner) {}

  QString AskOpenFile(const FileQuestion& question) override;
  QString AskSaveFile(const FileQuestion& question) override;

 private:
  QString Ask(QFileDialog& dialog, const FileQuestion& question);

  QWidget* m_owner;
  QString m_lastFolder;  ///< of the last file that was chosen
};

}  // namespace quarn
