#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

namespace quarn {
namespace {

using KeyStoreRead = SettingsFileTest;

// The debugging output of one test, caught instead of printed.
QStringList g_debugLines;

class DebugLines {
 public:
  DebugLines() {
    g_debugLines.clear();
    m_before =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
          if (type == QtDebugMsg && qstrcmp(context.category, "quarn.settings") == 0)
            g_debugLines.append(text);
        });
  }
  ~DebugLines() { qInstallMessageHandler(m_before); }

 private:
  QtMessageHandler m_before;
};

TEST_F(KeyStoreRead, ClassifiesAPath) {
  EXPECT_EQ(static_cast<int>(ClassifyPath(Path(QStringLiteral("nothing")))), 0);
  EXPECT_EQ(static_cast<int>(ClassifyPath(WithBytes("x"))), 1);
  EXPECT_EQ(static_cast<int>(ClassifyPath(Path(QString()))), 2);
  EXPECT_EQ(static_cast<int>(ClassifyPath(WithBytes("x") + QStringLiteral("/below"))), 0);
  EXPECT_EQ(ClassifyPath(QString()), PathKind::Nothing);
}

TEST_F(KeyStoreRead, GivesTheRestOfTheLineAsItStands) {
  const QString path = WithBytes(".BEGIN\nMEM0= a = b \t\nMEM1=last");
  EXPECT_EQ(ReadValue(path, keys::kMem[0]), QStringLiteral(" a = b \t"));
  EXPECT_EQ(ReadValue(path, keys::kMem[1]), QStringLiteral("last"));
}

TEST_F(KeyStoreRead, TellsAnEmptyValueFromNone) {
  const QString path = WithBytes(".BEGIN\nMEM0=\n.END\n");
  EXPECT_EQ(ReadValue(path, keys::kMem[0]), QStringLiteral(""));
  EXPECT_EQ(ReadValue(path, keys::kMem[1]), std::nullopt);
}

TEST_F(KeyStoreRead, TheFirstMatchingLineWins) {
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\nCOM_PORT=COM3\nCOM_PORT=COM4\n.END\n"), keys::kComPort),
            QStringLiteral("COM3"));
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\nCOM_PORT=COM3\nCOM_PORT=COM3\n.END\n"), keys::kComPort),
            QStringLiteral("COM3"));
}

TEST_F(KeyStoreRead, ALineThatBeginsWithABlankIsAnother) {
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\n COM_PORT=COM3\n.END\n"), keys::kComPort), std::nullopt);
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\n COM_PORT=COM3\nCOM_PORT=COM4\n.END\n"), keys::kComPort),
            QStringLiteral("COM4"));
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\nCOM_PORT =COM3\n.END\n"), keys::kComPort), std::nullopt);
}

TEST_F(KeyStoreRead, MatchesTheWholeKeyAndItsCase) {
  EXPECT_EQ(ReadValue(WithBytes("com_port=COM3\nCOM_POR\nXCOM_PORT=COM4\n"), keys::kComPort), std::nullopt);
  EXPECT_EQ(ReadValue(WithBytes("COM_PORT2=x\nCOM_PORT=y\n"), keys::kComPort), QStringLiteral("y"));
}

TEST_F(KeyStoreRead, SearchesTheLinesBeforeBeginToo) {
  EXPECT_EQ(ReadValue(WithBytes("COM_PORT=COM5\n.BEGIN\nCOM_PORT=COM6\n.END\n"), keys::kComPort),
            QStringLiteral("COM5"));
  EXPECT_EQ(ReadValue(WithBytes(".VER=1\n.BEGIN\n.END\n"), SettingsKey(u".VER=")), QStringLiteral("1"));
}

TEST_F(KeyStoreRead, AnExactEndLineEndsTheSearch) {
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\n.END\nCOM_PORT=COM3\n"), keys::kComPort), std::nullopt);
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\n.END \n.ENDX\n.end\nCOM_PORT=COM3\n"), keys::kComPort),
            QStringLiteral("COM3"));
}

TEST_F(KeyStoreRead, ALineEndingInALoneCarriageReturnGoesOn) {
  EXPECT_EQ(ReadValue(WithBytes(".BEGIN\rCOM_PORT=COM3\r.END\r"), keys::kComPort), std::nullopt);
  EXPECT_EQ(ReadValue(WithBytes("MEM0=a\rb\n"), keys::kMem[0]), QStringLiteral("a\rb"));
}

TEST_F(KeyStoreRead, FindsNothingInOneCharacterOrNone) {
  EXPECT_EQ(ReadValue(WithBytes(""), SettingsKey(u"x")), std::nullopt);
  EXPECT_EQ(ReadValue(WithBytes("x"), SettingsKey(u"x")), std::nullopt);
  EXPECT_EQ(ReadValue(WithBytes("xy"), SettingsKey(u"x")), QStringLiteral("y"));
}

TEST_F(KeyStoreRead, FindsNothingInAFileThatIsNotUtf8) {
  EXPECT_EQ(ReadValue(WithBytes("COM_PORT=COM3\nMEM0=\xFF\n"), keys::kComPort), std::nullopt);
  EXPECT_EQ(ReadWholeText(WithBytes("COM_PORT=COM3\nMEM0=\xFF\n")), std::nullopt);
}

TEST_F(KeyStoreRead, ReportsAMissingFileOnTheDebuggingOutputOnly) {
  const DebugLines debug;
  const QString missing = Path(QStringLiteral("missing"));
  EXPECT_EQ(ReadValue(missing, keys::kComPort), std::nullopt);
  EXPECT_EQ(ReadWholeText(missing), std::nullopt);
  EXPECT_TRUE(UpdateValue(missing, keys::kComPort, QStringLiteral("COM3")));
  EXPECT_FALSE(AddKeyLine(missing, QStringLiteral("A=1")));
  EXPECT_FALSE(RemoveKey(missing, SettingsKey(u"A=")));
  EXPECT_EQ(ReadWholeText(Path(QString())), std::nullopt);
  EXPECT_EQ(g_debugLines, QStringList(6, QStringLiteral("No file found !!")));
  EXPECT_EQ(FilesInFolder(), QStringList());
}

TEST_F(KeyStoreRead, ReadsTheWholeTextUpTo16383Characters) {
  EXPECT_EQ(ReadWholeText(WithBytes("\xEF\xBB\xBF"
                                    "a\r\nb")),
            QStringLiteral("a\nb"));
  EXPECT_EQ(ReadWholeText(WithBytes("")), QString());
  const QByteArray full(16383, 'x');
  EXPECT_EQ(ReadWholeText(WithBytes(full)), QString::fromLatin1(full));
  EXPECT_EQ(ReadWholeText(WithBytes(full + "y")), QString::fromLatin1(full));
  EXPECT_EQ(ReadWholeText(WithBytes(QByteArray(1000000, 'x'))), QString::fromLatin1(full));
}

TEST_F(KeyStoreRead, NeverCutsACharacterInTwo) {
  const QByteArray nearlyFull(16382, 'x');
  const QByteArray astral = "\xF0\x9F\x98\x80";
  EXPECT_EQ(ReadWholeText(WithBytes(nearlyFull + astral + "y")), QString::fromLatin1(nearlyFull));
  // Cut inside a three-byte character by the reading itself.
  const QByteArray euros = QByteArray("\xE2\x82\xAC").repeated(100000);
  for (const QByteArray& shift : {QByteArray(), QByteArray("a"), QByteArray("ab")}) {
    const std::optional<QString> text = ReadWholeText(WithBytes(shift + euros));
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), 16383);
    EXPECT_EQ(text->count(u'\u20AC'), 16383 - shift.size());
  }
}

TEST_F(KeyStoreRead, WritesAWholeTextAndReadsItBack) {
  const QString text = QStringLiteral("line\n\n\u00E9\U0001F600");
  EXPECT_TRUE(WriteWholeText(Path(), text));
  EXPECT_EQ(BytesOf(Path()), QByteArray(kBom) + "line\r\n\r\n\xC3\xA9\xF0\x9F\x98\x80");
  EXPECT_EQ(ReadWholeText(Path()), text);
  EXPECT_TRUE(WriteWholeText(Path(), QString()));
  EXPECT_EQ(BytesOf(Path()), QByteArray(kBom));
}

TEST_F(KeyStoreRead, SaysWhenAWholeTextCouldNotBeWritten) {
  const DebugLines debug;
  EXPECT_FALSE(WriteWholeText(Path(QStringLiteral("no/such/folder")), QStringLiteral("x")));
  EXPECT_FALSE(WriteWholeText(Path(QString()), QStringLiteral("x")));
  EXPECT_EQ(g_debugLines.filter(QStringLiteral("cannot write")).size(), 2);
}

}  // namespace
}  // namespace quarn
