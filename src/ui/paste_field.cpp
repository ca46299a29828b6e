#include "ui/paste_field.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <utility>

#include "ui/dropped_file.h"

namespace quarn {
namespace {

/// Some programs offer the name of a file that is dragged as text. The file stays theirs.
void TakeNameOnly(QDropEvent& event) {
  if (event.isAccepted() && event.mimeData()->hasUrls()) AcceptAsCopy(event);
}

}  // namespace

PasteField::PasteField(QWidget* parent, Source source) : QLineEdit(parent), m_source(std::move(source)) {}

void PasteField::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Paste)) {
    PasteFrom(QClipboard::Clipboard);
  } else {
    QLineEdit::keyPressEvent(event);
  }
}

void PasteField::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::MiddleButton && QGuiApplication::clipboard()->supportsSelection()) {
    deselect();
    PasteFrom(QClipboard::Selection);
  } else {
    QLineEdit::mouseReleaseEvent(event);
  }
}

void PasteField::contextMenuEvent(QContextMenuEvent* event) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const auto add = [&](const char* text, QKeySequence::StandardKey key, bool enabled, auto&& act) {
    QAction* action = menu->addAction(QLatin1String(text), this, act);
    action->setShortcut(key);
    action->setShortcutVisibleInContextMenu(true);
    action->setEnabled(enabled);
  };
  const bool edits = !isReadOnly();
  add("&Undo", QKeySequence::Undo, edits && isUndoAvailable(), &QLineEdit::undo);
  add("&Redo", QKeySequence::Redo, edits && isRedoAvailable(), &QLineEdit::redo);
  menu->addSeparator();
  add("Cu&t", QKeySequence::Cut, edits && hasSelectedText(), &QLineEdit::cut);
  add("&Copy", QKeySequence::Copy, hasSelectedText(), &QLineEdit::copy);
  // Delayed: waiting for the text processes events, which would delete the menu while it is in use.
  add("&Paste", QKeySequence::Paste, edits, [this] {
    QMetaObject::invokeMethod(
        this, [this] { PasteFrom(QClipboard::Clipboard); }, Qt::QueuedConnection);
  });
  add("Delete", QKeySequence::UnknownKey, edits && hasSelectedText(), &QLineEdit::del);
  menu->addSeparator();
  add("Select All", QKeySequence::SelectAll, !text().isEmpty(), &QLineEdit::selectAll);
  menu->popup(event->globalPos());
  event->accept();
}

void PasteField::dragEnterEvent(QDragEnterEvent* event) {
  QLineEdit::dragEnterEvent(event);
  TakeNameOnly(*event);
}

void PasteField::dragMoveEvent(QDragMoveEvent* event) {
  QLineEdit::dragMoveEvent(event);
  TakeNameOnly(*event);
}

void PasteField::dropEvent(QDropEvent* event) {
  // The field takes the text even if it is refused afterwards.
  if (event->mimeData()->hasUrls() && !AcceptAsCopy(*event)) return;
  QLineEdit::dropEvent(event);
  TakeNameOnly(*event);
}

void PasteField::PasteFrom(QClipboard::Mode mode) {
  if (isReadOnly()) return;
  if (const std::optional<QString> text = m_source(mode)) insert(*text);
}

}  // namespace quarn
