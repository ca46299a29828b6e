#include "system/e2e/dialogs.h"

namespace quarn::test {
namespace {

/// Another program owns the clipboard and the selection and does not answer. Qt would ask it several times,
/// five seconds each, with all windows frozen: also to find out whether a menu may offer "Paste".
class SilentClipboard : public Dialogs {
 protected:
  void StartWith(const QList<QPair<QString, QString>>& values = {}) {
    StartConnected("* -> line \"OK\"", values);
    m_owner.setProcessEnvironment(desktop.Environment());
    m_owner.start(QStringLiteral(QUARN_SILENT_OWNER), {});
    ASSERT_TRUE(Eventually([this] { return Told() == "owner\n"; }));
  }
  ~SilentClipboard() override { End(m_owner); }

  /// All that the owner has told since the last time this was forgotten.
  const QByteArray& Told() {
    m_owner.waitForReadyRead(0);
    m_told += m_owner.readAllStandardOutput();
    return m_told;
  }
  void Forget() { m_told.clear(); }
  ::testing::AssertionResult WasAskedOnce(const char* selection) {
    const QByteArray question = QByteArray(selection) + " UTF8_STRING\n";
    if (Eventually([&] { return Told() == question; })) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "it was asked: " << m_told.toStdString();
  }
  ::testing::AssertionResult WasNotAsked() {
    if (Told().isEmpty()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "it was asked: " << m_told.toStdString();
  }

  const QString kTable = QStringLiteral("^Quarn - Function Key Table$");
  const QString kField = QStringLiteral("MEM3");

 private:
  ChildProcess m_owner;
  QByteArray m_told;
};

TEST_F(SilentClipboard, IsAskedOnceByTheTerminalScreen) {
  StartWith();
  Forget();
  Focus(terminal);
  Type(QStringLiteral("ab"));
  Press({QStringLiteral("ctrl+v"), QStringLiteral("c"), QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("abc\r")) << "what was typed meanwhile comes afterwards";
  EXPECT_TRUE(WasAskedOnce("CLIPBOARD"));
}

TEST_F(SilentClipboard, IsAskedOnceByTheFunctionKeyTableHoweverItIsPasted) {
  StartWith({{QStringLiteral("MEM3"), QStringLiteral("old")}});
  OpenDialog(QStringLiteral("Tools"), QStringLiteral("Function Key Table"), kTable);
  ClickButton(kTable, QStringLiteral("EDIT"), [this] { return IsEnabled(kTable, kField); });
  ClickUntil(kTable, kField, [this] {
    const std::optional<Control> field = FindControl(kTable, kField);
    return field && field->focused;
  });
  const auto typed = [this](const QString& text) -> ::testing::AssertionResult {
    if (Eventually([&] { return TextOfControl(kTable, kField) == text; }))
      return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "the text is " << TextOfControl(kTable, kField).toStdString();
  };
  Press({QStringLiteral("End")});
  Forget();
  Press({QStringLiteral("ctrl+v"), QStringLiteral("a")});
  EXPECT_TRUE(typed(QStringLiteral("olda")));
  EXPECT_TRUE(WasAskedOnce("CLIPBOARD"));
  Forget();
  const std::optional<Control> field = FindControl(kTable, kField);
  ASSERT_TRUE(field);
  // Behind the text.
  ClickOnScreen(field->place.center(), 2);
  Type(QStringLiteral("b"));
  EXPECT_TRUE(typed(QStringLiteral("oldab")));
  EXPECT_TRUE(WasAskedOnce("PRIMARY"));
  Forget();
  const qsizetype before = CountWindows();
  ClickOnScreen(field->place.center(), 3);
  ASSERT_TRUE(Eventually([&] { return CountWindows() > before; }));
  EXPECT_TRUE(WasNotAsked()) << "its menu comes up without asking";
  // Its letter in the menu. A key pressed before the menu has gone would go with it.
  Press({QStringLiteral("p")});
  EXPECT_TRUE(WasAskedOnce("CLIPBOARD"));
  Press({QStringLiteral("c")});
  EXPECT_TRUE(typed(QStringLiteral("oldabc")));
  EXPECT_TRUE(WasAskedOnce("CLIPBOARD"));
}

}  // namespace
}  // namespace quarn::test
