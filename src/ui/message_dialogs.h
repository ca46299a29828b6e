#pragma once

#include <QBasicTimer>
#include <QDeadlineTimer>
#include <QPoint>
#include <QSize>
#include <QString>
#include <optional>
#include <vector>

#include "base/message_operations.h"
#include "ui/window_place.h"

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
  int result;  ///< the result of Answer after this button
};

/// A small modal box: lines from top to bottom (empty ones take no space), buttons from left to right. The
/// default answer's button has the focus. If there are two buttons, the first letter of a button presses it,
/// but not in the first half second of a box that opens without a user action; keys held down since before do
/// not answer such a box. The box grows with its text up to nine tenths of the screen; longer lines wrap, and
/// taller boxes scroll. Nothing is clipped.
class MessageDialog : public PlacedDialog {
 public:
  /// 0 until a button sets it; also 0 after the close box or Escape.
  [[nodiscard]] int Answer() const { return m_answer; }

 protected:
  MessageDialog(QWidget* owner, const QString& name, const QString& caption,
                const std::vector<MessageLine>& lines, const std::vector<MessageButton>& buttons,
                AnswerByDefault byDefault = AnswerByDefault::Agree, bool warningPicture = false);
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void Place() override;

  std::optional<QPoint> m_position;

 private:
  /// The lines below each other, within `room`.
  QWidget* CreateText(const std::vector<MessageLine>& lines, QSize room);
  QHBoxLayout* AddButtons(const std::vector<MessageButton>& buttons, AnswerByDefault byDefault);
  /// Whether the key would answer a box that opened without a user action, and was meant for the window
  /// before. A box that a key has opened is answered by its repeats, as everywhere.
  [[nodiscard]] bool IsHeldSinceBefore(const QKeyEvent& event) const;
  /// The button that this key presses wherever the focus is; null if there is none.
  [[nodiscard]] QPushButton* ButtonOfKey(const QKeyEvent& event) const;

  std::vector<QPushButton*> m_buttons;
  QPushButton* m_defaultButton = nullptr;
  const bool m_comesByItself;
  QDeadlineTimer m_typedBefore;  ///< until then letters count as typed for the previous window
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

/// The text of the two simple questions if their caller gives none.
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

/// The program's name, the text's lines and OK, for what happens before there is a window of the program.
class PlainMessage final : public MessageDialog {
 public:
  PlainMessage(QWidget* owner, const QString& text);
};

/// One line that closes automatically; Escape, Enter and the close box close it earlier.
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
