#include "ui/window_messages.h"

#include <QApplication>
#include <QMessageBox>

#include "identity.h"
#include "ui/message_dialogs.h"

namespace quarn {
namespace {

QWidget* Owner() { return QApplication::activeWindow(); }

}  // namespace

void WindowMessages::ShowErrorMessage(const QString& captionSuffix, const QString& line0,
                                      const QString& line1, const QString& line2) {
  CConfirmErr(Owner(), captionSuffix, line0, line1, line2).exec();
}

void WindowMessages::ShowInformationMessage(const QString& captionSuffix, const QString& line0,
                                            const QString& line1, const QString& line2) {
  CConfirmOK(Owner(), captionSuffix, line0, line1, line2).exec();
}

bool WindowMessages::AskConfirmation(const QString& captionSuffix, const QString& line0, const QString& line1,
                                     const QString& line2) {
  CConfirmYesCancel box(Owner(), captionSuffix, line0, line1, line2);
  box.exec();
  return box.Answer() == 1;
}

bool WindowMessages::AskYesNo(const QString& captionSuffix, const QString& line0, const QString& line1,
                              const QString& line2) {
  CConfirmYesNo box(Owner(), captionSuffix, line0, line1, line2);
  box.exec();
  return box.Answer() == 1;
}

bool WindowMessages::AskSimple(const QString& text) {
  CConfirmSimple box(Owner(), text);
  box.exec();
  return box.Answer() == 1;
}

bool WindowMessages::AskSimpleYesNo(const QString& text) {
  CYesNo box(Owner(), text);
  box.exec();
  return box.Answer() == 1;
}

void WindowMessages::ShowTransientMessage(const QString& text, std::optional<QPoint> position) {
  COneshotMsgPos(Owner(), text, position).exec();
}

void WindowMessages::ShowPlainMessage(const QString& text) {
  QMessageBox box(QMessageBox::NoIcon, QString::fromLatin1(identity::kName), text, QMessageBox::Ok, Owner());
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

}  // namespace quarn
