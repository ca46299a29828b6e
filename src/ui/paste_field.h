#pragma once

#include <QClipboard>
#include <QLineEdit>
#include <functional>
#include <optional>

namespace quarn {

/// A line edit that takes what is pasted from `source`, whichever way: with the keys, from its menu, with the
/// middle button. Qt's own would freeze all windows for as long as another program does not hand over its
/// text, even to find out whether its menu may offer "Paste".
class PasteField final : public QLineEdit {
 public:
  /// What is on the clipboard, or selected; nothing when there is nothing to be had.
  using Source = std::function<std::optional<QString>(QClipboard::Mode)>;
  PasteField(QWidget* parent, Source source);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void PasteFrom(QClipboard::Mode mode);

  Source m_source;
};

}  // namespace quarn
