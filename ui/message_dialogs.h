#pragma once

#include <QDialog>
#include <QPoint>
#include <QString>
#include <optional>
#include <vector>

namespace quarn {

/// The program's name, one blank, and the suffix.
QString MessageCaption(const QString& suffix);

struct MessageLine {
  int controlId;
  QString text;
};

struct MessageButton {
  int controlId;
  QString text;
  int result;  ///< what Answer gives after this button
};

/// A small modal box: lines from top to bottom (empty ones take no room), buttons from left to right, the
/// first of them the default. It grows with its text, which is never clipped, and centres itself.
class MessageDialog : public QDialog {
 public:
  /// 0 until a button says otherwise; also after the close box or Escape.
  [[nodiscard]] int Answer() const { return m_answer; }

 protected:
  MessageDialog(QWidget* owner, const QString& caption, const std::vector<MessageLine>& lines,
                const std::vector<MessageButton>& buttons, bool warningPicture = false);
  void showEvent(QShowEvent* event) override;

  std::optional<QPoint> m_position;

 private:
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
                    const QString& line2);
};

/// A question with YES and NO; Answer is 1 for YES.
class CConfirmYesNo final : public MessageDialog {
 public:
  CConfirmYesNo(QWidget* owner, const QString& suffix, const QString& line0, const QString& line1,
                const QString& line2);
};

/// One line that closes by itself.
class COneshotMsgPos final : public MessageDialog {
 public:
  static constexpr int kDisplayMs = 2000;
  COneshotMsgPos(QWidget* owner, const QString& text, std::optional<QPoint> position,
                 int displayMs = kDisplayMs);

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  int m_timer;
};

}  // namespace quarn
