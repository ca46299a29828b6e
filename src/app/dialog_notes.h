#pragma once

#include <memory>

namespace quarn {

/// When a file dialog of Qt's goes, it notes for all programs that use Qt where it was and how it looked: on
/// Windows in the registry, where this program keeps nothing. This object, made before the dialog and
/// destroyed after it, undoes that. Does nothing where the notes are a file, whose folder a setting of Qt's
/// names.
class DialogNotesUndone {
 public:
  DialogNotesUndone();
  ~DialogNotesUndone();
  /// Call it right before the dialog goes. The notes of that moment are those of other programs, and stay.
  void KeepOthers();
  DialogNotesUndone(const DialogNotesUndone&) = delete;
  DialogNotesUndone& operator=(const DialogNotesUndone&) = delete;

 private:
  struct Notes;
  std::unique_ptr<Notes> m_before;
};

}  // namespace quarn
