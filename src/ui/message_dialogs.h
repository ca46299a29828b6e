#pragma once

#include <QBasicTimer>
#include <QDeadlineTimer>
#include <QPoint>
#include <QSize>
#include <QString>
#include <optional>
#include <vector>

#include "base/message_operations.h"
#include "ui/placed_dialog.h"

class QHBoxLayout;
class QPushButton;

namespace quarn {

/// The program's name, one blank, and the suffix.
QString MessageCaption(const QString& suffix);

struct MessageLine {
  int controlId;
  const char* name;  ///< the control's object name
  QString text;
};

struct MessageButton {
  int controlId;
  const char* name;  ///< the control's object name
  QString text;
  int result;  ///< what Answer gives after this button
};

/// A small modal box: lines from top to bottom (empty ones take no room), buttons from left to right. The
/// button of the answer by default has the focus; where there are two, the letter that a button begins with
/// presses it, but not in the first half second of a box that comes by itself. The box grows with its text up
/// to nine tenths of the screen; longer lines wrap, and what is still too tall scrolls. Nothing is clipped.
class MessageDialog : public PlacedDialog {
 public:
  /// 0 until a button says otherwise; also after the close box or Escape.
  [[nodiscard]] int Answer() const { return m_answer; }

 protected:
  MessageDialog(QWidget* owner, const QString& name, const QString& caption,
                const std::vector<MessageLine>& lines, const std::vector<MessageButton>& buttons,
                AnswerByDefault byDefault = AnswerByDefault::Agree, bool warningPicture = false);
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void Place() override;

  std::optional<QPoint> m_position;

 private:
  /// The lines one below the other, in no more than `room`.
  QWidget* CreateText(const std::vector<MessageLine>& lines, QSize room);
  QHBoxLayout* AddButtons(const std::vector<MessageButton>& buttons, AnswerByDefault byDefault);
  /// The button that this key presses wherever the focus is; null when there is none.
  [[nodiscard]] QPushButton* ButtonOfKey(const QKeyEvent& event) const;

  std::vector<QPushButton*> m_buttons;
  QPushButton* m_defaultButton = nullptr;
  const bool m_comesByItself;
  QDeadlineTimer m_typedBefore;  ///< until then a letter was meant for the window that was there before
  int m_answer = 0;
};

/// Errors.
class CConfirmErr final : public MessageDialog {
 public:
  CConfirmErr(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
              const QString& line2);
};

/// Information and warnings.
class CConfirmOK final : public MessageDialog {
 public:
  CConfirmOK(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
             const QString& line2);
};

/// A question with OK and CANCEL; Answer is 1 for OK.
class CConfirmYesCancel final : public MessageDialog {
 public:
  CConfirmYesCancel(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
                    const QString& line2, AnswerByDefault byDefault = AnswerByDefault::Agree);
};

/// What the two simple questions ask when their caller has no text of its own.
inline constexpr char16_t kDefaultQuestion[] = u"OK to execute ?";

/// One line with OK and CANCEL; Answer is 1 for OK.
class CConfirmSimple final : public MessageDialog {
 public:
  explicit CConfirmSimple(QWidget* owner, const QString& text = QString::fromUtf16(kDefaultQuestion),
                          AnswerByDefault byDefault = AnswerByDefault::Agree);
};

/// One line with YES and NO; Answer is 1 for YES.
class CYesNo final : public MessageDialog {
 public:
  explicit CYesNo(QWidget* owner, const QString& text = QString::fromUtf16(kDefaultQuestion),
                  AnswerByDefault byDefault = AnswerByDefault::Agree);
};

/// A question with YES and NO; Answer is 1 for YES.
class CConfirmYesNo final : public MessageDialog {
 public:
  CConfirmYesNo(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
                const QString& line2, AnswerByDefault byDefault = AnswerByDefault::Agree);
};

/// One line that closes by itself; Escape, Enter and the close box send it away earlier.
class COneshotMsgPos final : public MessageDialog {
 public:
  static constexpr int kDisplayMs = 2000;
  COneshotMsgPos(QWidget* owner, const QString& text, std::optional<QPoint> position,
                 int displayMs = kDisplayMs);

 protected:
  void showEvent(QShowEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  int m_displayMs;
  QBasicTimer m_timer;
};

}  // namespace quarn
