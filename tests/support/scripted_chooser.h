#pragma once

#include <QList>
#include <functional>

#include "app/file_chooser.h"

namespace quarn::test {

/// Answers each file dialog with the same path, and records the questions.
class ScriptedChooser final : public FileChooser {
 public:
  QString answer;
  QList<FileQuestion> opened;
  QList<FileQuestion> saved;
  std::function<void()> whileShown;

  QString AskOpenFile(const FileQuestion& question) override { return Ask(opened, question); }
  QString AskSaveFile(const FileQuestion& question) override { return Ask(saved, question); }

 private:
  QString Ask(QList<FileQuestion>& asked, const FileQuestion& question) {
    asked.append(question);
    if (whileShown) whileShown();
    return answer;
  }
};

}  // namespace quarn::test
