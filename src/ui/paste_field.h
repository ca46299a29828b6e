#pragma once

#include <QClipboard>
#include <QLineEdit>
#include <functional>
#include <optional>

namespace quarn {

/// A line edit that gets pasted text from `source`, for all ways to paste: keys, menu, middle button. Qt's
/// own line edit would freeze all windows while another program does not provide its text, even only to
/// enable "Paste" in the menu.
class PasteField final : public QLineEdit {
 public:
  /// The text on the clipboard, or the selected text; nullopt if there is none.
  using Source = std::function<std::optional<QString>(QClipboard::Mode)>;
  PasteField(QWidget* parent, Source source);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void PasteFrom(QClipboard::Mode mode);

  Source m_source;
};

}  // namespace quarn
