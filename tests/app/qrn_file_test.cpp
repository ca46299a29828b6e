#include "app/qrn_file.h"

#include "tests/settings/settings_test_support.h"
#include "tests/support/recorded_messages.h"

namespace quarn::test {
namespace {

const QString kNotFound =
    QStringLiteral("error/: Error//QRN file was not found./Failed to load settings from QRN file.");
const QString kInvalid = QStringLiteral("error/: Error//Invalid file format./Could not load file contents.");

class QrnFile : public SettingsFileTest {
 protected:
  int Check(const QByteArray& bytes) const {
    return CheckQrnFile(WithBytes(bytes, QStringLiteral("user.qrn")));
  }
  /// A valid file of this size; the end mark is its last four bytes.
  static QByteArray OfSize(qsizetype size) {
    QByteArray bytes(".BEGIN\n");
    return bytes + QByteArray(size - bytes.size() - 4, 'x') + ".END";
  }
};

TEST_F(QrnFile, TheMarksMayStandAnywhereInAnyOrder) {
  EXPECT_EQ(Check(".BEGIN\n.END\n"), kQrnValid);
  EXPECT_EQ(Check(NormalisedBytes(SortedDefaults())), kQrnValid);
  EXPECT_EQ(Check(".END\n.BEGIN\n"), kQrnValid);
  EXPECT_EQ(Check("a.BEGINNING that has no .ENDING"), kQrnValid);
}

TEST_F(QrnFile, BothMarksMustBeThere) {
  for (const char* text : {"", ".BEGIN\n", ".END\n", ".begin\n.end\n", "BEGIN\nEND\n"}) {
    EXPECT_EQ(Check(text), kQrnNoFormat) << text;
  }
}

TEST_F(QrnFile, TheWholeOfTheLargestFileIsRead) {
  EXPECT_EQ(Check(OfSize(102400)), kQrnValid);
  EXPECT_EQ(Check(OfSize(102401)), kQrnTooLarge);
  EXPECT_EQ(Check(QByteArray(102400, 'x')), kQrnNoFormat);
}

TEST_F(QrnFile, WhatIsNotThereIsNotFound) {
  EXPECT_EQ(CheckQrnFile(Path(QStringLiteral("missing.qrn"))), kQrnNotFound);
  EXPECT_EQ(CheckQrnFile(QString()), kQrnNotFound);
}

TEST_F(QrnFile, AFolderHasNoFormat) {
  ASSERT_TRUE(QDir().mkdir(Path(QStringLiteral("folder.qrn"))));
  EXPECT_EQ(CheckQrnFile(Path(QStringLiteral("folder.qrn"))), kQrnNoFormat);
}

TEST_F(QrnFile, TextThatIsNoUtf8HasNoFormat) { EXPECT_EQ(Check(".BEGIN\n\xFF\n.END\n"), kQrnNoFormat); }

TEST_F(QrnFile, TheNumbersOfTheCodesAreFixed) {
  EXPECT_EQ(kQrnValid, 0);
  EXPECT_EQ(kQrnNotFound, -1);
  EXPECT_EQ(kQrnTooLarge, 3);
  EXPECT_EQ(kQrnNoFormat, 4);
}

TEST_F(QrnFile, AValidFileIsReturnedWithoutAWord) {
  RecordedMessages messages;
  const QString path = WithBytes(OfSize(102400), QStringLiteral("user.qrn"));
  EXPECT_EQ(LoadQrnFile(path, messages), path);
  EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(QrnFile, AnyOtherIsReportedAndNotReturned) {
  RecordedMessages messages;
  EXPECT_EQ(LoadQrnFile(Path(QStringLiteral("missing.qrn")), messages), QString());
  EXPECT_EQ(LoadQrnFile(WithBytes(OfSize(102401), QStringLiteral("a.qrn")), messages), QString());
  EXPECT_EQ(LoadQrnFile(WithBytes(".BEGIN\n", QStringLiteral("b.qrn")), messages), QString());
  EXPECT_EQ(messages.shown, (QStringList{kNotFound, kInvalid, kInvalid}));
}

TEST_F(QrnFile, EveryPositiveCodeHasOneTextAndOtherOnesHaveNone) {
  RecordedMessages messages;
  TellQrnFailure(1, messages);
  TellQrnFailure(-2, messages);
  TellQrnFailure(0, messages);
  const QString noText = QStringLiteral("error/: Error///");
  EXPECT_EQ(messages.shown, (QStringList{kInvalid, noText, noText}));
}

}  // namespace
}  // namespace quarn::test
