#include "ui/window_messages.h"

#include "ui/box.h"
#include "ui/message_dialogs.h"

namespace quarn {
namespace {

/// The user's answer to a box created with these arguments; the box is deleted afterwards.
template <typename Box, typename... Parts>
int AnswerTo(const Parts&... parts) {
  Box box(nullptr, parts...);
  RunBox(box);
  return box.Answer();
}

}  // namespace

void WindowMessages::ShowErrorMessage(const QString& captionSuffix, const QString& line0,
                                      const QString& line1, const QString& line2) {
  AnswerTo<CConfirmErr>(captionSuffix, line0, line1, line2);
}

void WindowMessages::ShowInformationMessage(const QString& captionSuffix, const QString& line0,
                                            const QString& line1, const QString& line2) {
  AnswerTo<CConfirmOK>(captionSuffix, line0, line1, line2);
}

bool WindowMessages::AskConfirmation(const QString& captionSuffix, const QString& line0, const QString& line1,
                                     const QString& line2, AnswerByDefault byDefault) {
  return AnswerTo<CConfirmYesCancel>(captionSuffix, line0, line1, line2, byDefault) == 1;
}

bool WindowMessages::AskYesNo(const QString& captionSuffix, const QString& line0, const QString& line1,
                              const QString& line2, AnswerByDefault byDefault) {
  return AnswerTo<CConfirmYesNo>(captionSuffix, line0, line1, line2, byDefault) == 1;
}

bool WindowMessages::AskSimple(const QString& text, AnswerByDefault byDefault) {
  return AnswerTo<CConfirmSimple>(text, byDefault) == 1;
}

bool WindowMessages::AskSimpleYesNo(const QString& text, AnswerByDefault byDefault) {
  return AnswerTo<CYesNo>(text, byDefault) == 1;
}

void WindowMessages::ShowTransientMessage(const QString& text, std::optional<QPoint> position) {
  AnswerTo<COneshotMsgPos>(text, position);
}

void WindowMessages::ShowPlainMessage(const QString& text) {
  PlainMessage box(nullptr, text);
  // Before this program has a window, another program's window may cover everything: the splash of a first
  // Quarn.
  if (WindowForBox() == nullptr) box.setWindowFlag(Qt::WindowStaysOnTopHint);
  RunBox(box);
}

}  // namespace quarn
