#pragma once

#include "app/file_chooser.h"

class QWidget;

namespace quarn {

/// The system's file dialog where it has one, or Qt's.
class FileChooserDialog final : public FileChooser {
 public:
  /// The dialogs are modal to the window `owner` (not owned; may be null).
  explicit FileChooserDialog(QWidget* owner) : m_owner(owner) {}

  QString AskOpenFile(const FileQuestion& question) override;
  QString AskSaveFile(const FileQuestion& question) override;

 private:
  QWidget* m_owner;
};

}  // namespace quarn
