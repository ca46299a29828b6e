#include <windows.h>

#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"
#include "settings/user_file.h"

namespace quarn {
namespace {

using KeyStoreWin32 = SettingsFileTest;

const wchar_t* Native(const QString& path) { return reinterpret_cast<const wchar_t*>(path.utf16()); }

/// Another program that has the file open and lets nobody replace it meanwhile.
class Reader {
 public:
  explicit Reader(const QString& path)
      : m_handle(
            CreateFileW(Native(path), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(m_handle, INVALID_HANDLE_VALUE);
  }
  ~Reader() { CloseHandle(m_handle); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

 private:
  HANDLE m_handle;
};

TEST_F(KeyStoreWin32, AFileInUseStaysAsItIsAndNothingIsLeftBesideIt) {
  const QByteArray bytes = NormalisedBytes(SortedDefaults());
  const QString path = WithBytes(bytes);
  {
    const Reader reader(path);
    EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
    EXPECT_FALSE(WriteWholeText(path, QStringLiteral("x")));
    EXPECT_FALSE(WriteDefaultFile(path));
  }
  EXPECT_EQ(BytesOf(path), bytes);
  EXPECT_EQ(FilesInFolder(), QStringList{QStringLiteral("Quarn.ini")});
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));
}

TEST_F(KeyStoreWin32, AReadOnlyFileIsRefused) {
  const QByteArray bytes = NormalisedBytes(SortedDefaults());
  const QString path = WithBytes(bytes);
  ASSERT_NE(SetFileAttributesW(Native(path), FILE_ATTRIBUTE_READONLY), 0);
  EXPECT_FALSE(WriteWholeText(path, QStringLiteral("x")));
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
  EXPECT_EQ(BytesOf(path), bytes);
  ASSERT_NE(SetFileAttributesW(Native(path), FILE_ATTRIBUTE_NORMAL), 0);
}

TEST_F(KeyStoreWin32, AFileBySomeOtherSpellingOfItsNameIsTheSameFile) {
  const QByteArray bytes = NormalisedBytes(SortedDefaults());
  const QString path = WithBytes(bytes);
  EXPECT_FALSE(CopySettingsFile(path, Path(QStringLiteral("QUARN.INI"))));
  EXPECT_FALSE(CopySettingsFile(path, QDir::toNativeSeparators(path)));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreWin32, NamesInAnyScriptWork) {
  const QString path = Path(QStringLiteral("M\u00fcller \u041c\u0438\u0440 \u6e2c\u5b9a.qrn"));
  EXPECT_TRUE(WriteDefaultFile(path));
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));
}

}  // namespace
}  // namespace quarn
