#pragma once

#include <QImage>

#include "system/e2e/dialogs.h"

namespace quarn::test {

/// An end-to-end test of the option dialogs.
class OptionDialogs : public Dialogs {
 protected:
  void OpenFormat() { OpenDialog(kOption, QStringLiteral("Command Format  (&F)").remove(u'&'), kFormat); }
  void OpenScreen() {
    OpenDialog(kOption, QStringLiteral("Terminal Screen Option  (&T)").remove(u'&'), kScreen);
  }
  void OpenMain() {
    OpenDialog(kOption, QStringLiteral("Main Dialog Option (&M)").remove(u'&'), kMainDialog);
  }
  /// Clicks on a radio button or check box: only this key changes, to this value.
  void Change(const QString& dialog, const char* control, bool checked, const QByteArray& key,
              const QByteArray& value) {
    const QString name = QString::fromLatin1(control);
    ASSERT_EQ(IsChecked(dialog, name), !checked) << control;
    ClickUntil(dialog, name, [&] { return FileHas(key, value); });
    EXPECT_TRUE(FileBecomes(key, value));
    EXPECT_TRUE(Eventually([&] { return IsChecked(dialog, name) == checked; })) << control;
  }
  /// The colour beside a window's contents.
  QRgb BackgroundOf(const QString& titlePattern) {
    const QString window = desktop.Windows(titlePattern).value(0);
    const QImage picture = QImage::fromData(
        desktop.Run(QStringLiteral("maim"), {QStringLiteral("--hidecursor"), QStringLiteral("--format=png"),
                                             QStringLiteral("--window=") + window}));
    return picture.isNull() ? 0 : picture.pixel(2, picture.height() / 2);
  }
  ::testing::AssertionResult BackgroundBecomes(QRgb colour) {
    Focus(terminal);
    QRgb found = 0;
    if (Eventually([&] {
          found = BackgroundOf(kTerminal);
          return found == colour;
        }))
      return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << std::hex << found << " instead of " << colour;
  }
  QStringList TerminalButtons() { return Buttons(kTerminal); }
  void Length(const char* button) {
    ClickUntil(kScreen, QStringLiteral("Max Command Length ") + QLatin1String(button),
               [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
  }

  static constexpr QRgb kNavy = qRgb(1, 36, 86);
  static constexpr QRgb kBlack = qRgb(0, 0, 0);
  const QString kOption = QStringLiteral("Option");
  const QString kFormat = QStringLiteral("^Quarn - Command Format$");
  const QString kScreen = QStringLiteral("^Quarn - Terminal Screen Option$");
  const QString kMainDialog = QStringLiteral("^Quarn - Main Dialog Optiom$");
  const QString kTable = QStringLiteral("^Quarn - Function Key Table$");
  const QStringList kClearLog{QStringLiteral("Is it OK to clear the operation log ?")};
};

}  // namespace quarn::test
