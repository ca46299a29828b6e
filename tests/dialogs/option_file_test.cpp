// Options whose file cannot be written: they take effect, and no message is shown.

#include <QRadioButton>

#include "dialogs/option_dialog_fixture.h"
#include "dialogs/settings/options.h"

namespace quarn::test {
namespace {

template <typename Dialog>
class UnwrittenOptions : public OptionDialogFixture<Dialog> {
 protected:
  /// Clicks every control but OK. Each changes a setting, unless it is selected already.
  void ClickEverything() {
    this->Open();
    for (const QAbstractButton* button : this->dialog->template findChildren<QAbstractButton*>()) {
      if (!button->isCheckable()) continue;
      const bool chosen = qobject_cast<const QRadioButton*>(button) != nullptr && button->isChecked();
      const SettingsRecord former = this->settings;
      this->Click(button->property(kControlIdProperty).toInt());
      EXPECT_EQ(this->settings == former, chosen) << button->text().toStdString();
    }
    EXPECT_TRUE(this->messages.shown.isEmpty());
  }
  [[nodiscard]] QString Path() { return this->Context().workingSettingsFile; }
};

using EveryOptionDialog = ::testing::Types<CCommandFormat, CScreenOption, CMainOption>;
TYPED_TEST_SUITE(UnwrittenOptions, EveryOptionDialog);

TYPED_TEST(UnwrittenOptions, AreInForceThoughTheFileIsReadOnly) {
  ASSERT_TRUE(QFile::setPermissions(this->Path(), QFile::ReadOwner));
  this->ClickEverything();
  EXPECT_EQ(this->File(), this->before);
}

TYPED_TEST(UnwrittenOptions, AreInForceThoughThereIsNoFile) {
  ASSERT_TRUE(QFile::remove(this->Path()));
  this->ClickEverything();
  EXPECT_FALSE(QFile::exists(this->Path()));
}

}  // namespace
}  // namespace quarn::test
