#pragma once

#include <memory>

namespace quarn {

/// When a file dialog of Qt's goes, it notes for all programs that use Qt where it was and how it looked: on
/// Windows in the registry, where this program keeps nothing. What is noted while this object exists is
/// undone at its end. Does nothing where the notes are a file, and a setting of Qt's names its folder.
class DialogNotesUndone {
 public:
  DialogNotesUndone();
  ~DialogNotesUndone();
  DialogNotesUndone(const DialogNotesUndone&) = delete;
  DialogNotesUndone& operator=(const DialogNotesUndone&) = delete;

 private:
  struct Notes;
  std::unique_ptr<const Notes> m_before;
};

}  // namespace quarn
