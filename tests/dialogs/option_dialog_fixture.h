#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <functional>
#include <vector>

#include "support/dialog_fixture.h"

namespace quarn::test {

/// One of the option dialogs, used with mouse and keys.
template <typename Dialog>
class OptionDialogFixture : public DialogFixture {
 protected:
  ~OptionDialogFixture() override { delete dialog.data(); }

  void Open() {
    dialog = new Dialog(nullptr, Context());
    ShowActive(*dialog);
  }
  QAbstractButton& Button(int id) { return *Control<QAbstractButton>(*dialog, id); }
  /// Where a user clicks: at its left end.
  void Click(int id) {
    QAbstractButton& button = Button(id);
    QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(8, button.height() / 2));
  }
  /// The control numbers of all checked buttons.
  QList<int> Checked() {
    QList<int> checked;
    for (const QAbstractButton* button : dialog->template findChildren<QAbstractButton*>()) {
      if (button->isChecked()) checked.append(button->property(kControlIdProperty).toInt());
    }
    std::sort(checked.begin(), checked.end());
    return checked;
  }
  QStringList Labels() {
    QStringList texts;
    for (const QLabel* label : dialog->template findChildren<QLabel*>()) texts.append(label->text());
    return texts;
  }
  /// Each of these buttons is clicked in turn and changes this one line of the file.
  struct Choice {
    int id;
    const char* text;
    QByteArray line;  ///< in the file at the start
    QByteArray chosen;
  };
  void ExpectChoice(const Choice& choice) {
    SCOPED_TRACE(choice.text);
    EXPECT_EQ(Button(choice.id).text(), QString::fromLatin1(choice.text));
    EXPECT_FALSE(Button(choice.id).objectName().isEmpty());
    EXPECT_TRUE(Button(choice.id).accessibleName().contains(QString::fromLatin1(choice.text).trimmed()));
    const QByteArray wanted = FileWith(choice.line, choice.chosen);
    Click(choice.id);
    EXPECT_EQ(File(), wanted);
  }
  void ExpectNoneClipped() {
    ExpectNothingClipped(*dialog);
    for (const QAbstractButton* button : dialog->template findChildren<QAbstractButton*>()) {
      EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
      EXPECT_GE(button->height(), button->sizeHint().height()) << button->text().toStdString();
      EXPECT_TRUE(dialog->rect().contains(button->geometry())) << button->text().toStdString();
    }
    EXPECT_EQ(dialog->minimumSize(), dialog->maximumSize());
  }
  /// The controls that Tab reaches, from the first one on.
  QList<int> TabOrder() {
    QList<int> order;
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);  // from OK to the first
    for (int i = 0; i < 20; ++i) {
      const int id = QApplication::focusWidget()->property(kControlIdProperty).toInt();
      if (order.contains(id)) break;
      order.append(id);
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    return order;
  }
  /// OK, Enter, Escape, the close box and a request each close it and clear its flag.
  void ExpectClosing(Window window, int okId) {
    const std::vector<std::function<void()>> ways{
        [&] { Click(okId); },
        [&] { Press(Qt::Key_Return); },
        [&] { Press(Qt::Key_Escape); },
        [&] { dialog->close(); },
        [&] { state.requests.close.Add(window); },
    };
    for (const auto& way : ways) {
      state.requests.close.Add(window);  // a request for an earlier window
      Open();
      EXPECT_TRUE(state.open.Contains(window));
      EXPECT_FALSE(state.requests.close.Contains(window));
      way();
      EXPECT_TRUE(Until([&] { return dialog.isNull(); }));
      EXPECT_FALSE(state.open.Contains(window));
      EXPECT_FALSE(state.requests.close.Contains(window));
    }
    EXPECT_FALSE(Written());
  }

  QPointer<Dialog> dialog;
};

}  // namespace quarn::test
