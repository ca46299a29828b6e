#include "app/path_display.h"

#include <gtest/gtest.h>

#include "settings/settings_test_support.h"

namespace quarn {
namespace {

struct Row {
  PathStyle style;
  const char16_t* path;
  int room;  ///< characters that fit
  const char16_t* shown;
};

constexpr PathStyle kSlash = PathStyle::Slashes;
constexpr PathStyle kBoth = PathStyle::SlashesAndBackslashes;

TEST(PathDisplay, KeepsAsMuchAsFits) {
  const Row rows[] = {
      {kSlash, u"/home/me/lab/a.qrn", 18, u"/home/me/lab/a.qrn"},
      {kSlash, u"/home/me/lab/a.qrn", 99, u"/home/me/lab/a.qrn"},
      // The first folder, and one part fewer each time.
      {kSlash, u"/home/someone/lab/a.qrn", 22, u"/home/.../lab/a.qrn"},
      {kSlash, u"/home/someone/lab/a.qrn", 19, u"/home/.../lab/a.qrn"},
      {kSlash, u"/home/someone/lab/a.qrn", 18, u"/home/.../a.qrn"},
      {kSlash, u"/home/someone/lab/a.qrn", 15, u"/home/.../a.qrn"},
      {kSlash, u"/home/a/b/c/d/e/f.qrn", 19, u"/home/.../d/e/f.qrn"},
      {kSlash, u"relative/folder/of/a.qrn", 20, u"relative/.../a.qrn"},
      // The name with a sign that something is missing, then the name alone.
      {kSlash, u"/home/someone/lab/a.qrn", 14, u".../a.qrn"},
      {kSlash, u"/home/someone/lab/a.qrn", 9, u".../a.qrn"},
      {kSlash, u"/home/someone/lab/a.qrn", 8, u"a.qrn"},
      {kSlash, u"/home/someone/lab/a.qrn", 5, u"a.qrn"},
      // The middle of the name is removed.
      {kSlash, u"/home/me/bench-settings.qrn", 12, u"bench....qrn"},
      {kSlash, u"bench-settings.qrn", 11, u"benc....qrn"},
      {kSlash, u"bench-settings.qrn", 4, u"b..."},
      {kSlash, u"bench-settings.qrn", 3, u"..."},
      {kSlash, u"bench-settings.qrn", 0, u"..."},
      {kSlash, u"/bench-settings.qrn", 18, u"bench-settings.qrn"},
      {kSlash, u"", 0, u""},
      // A surrogate pair is not split.
      {kSlash, u"\U0001F600\U0001F600\U0001F600\U0001F600", 7, u"\U0001F600...\U0001F600"},
      {kSlash, u"\U0001F600\U0001F600\U0001F600\U0001F600", 6, u"\U0001F600..."},
      // A backslash is an ordinary character, or separates parts of the path.
      {kSlash, u"/home/someone/a\\b.qrn", 17, u"/home/.../a\\b.qrn"},
      {kBoth, u"C:\\Users\\me\\lab\\a.qrn", 21, u"C:\\Users\\me\\lab\\a.qrn"},
      {kBoth, u"C:\\Users\\me\\lab\\a.qrn", 20, u"C:\\...\\me\\lab\\a.qrn"},
      {kBoth, u"C:\\Users\\me\\lab\\a.qrn", 16, u"C:\\...\\lab\\a.qrn"},
      {kBoth, u"C:/Users/me/lab/a.qrn", 16, u"C:/.../lab/a.qrn"},
      {kBoth, u"C:\\Users/me\\lab/a.qrn", 12, u"C:\\.../a.qrn"},
      {kBoth, u"C:\\Users\\me\\lab\\a.qrn", 9, u"...\\a.qrn"},
      {kBoth, u"\\\\server\\share\\lab\\a.qrn", 22, u"\\\\server\\...\\lab\\a.qrn"},
  };
  for (const Row& row : rows) {
    const auto fits = [&row](const QString& text) { return text.size() <= row.room; };
    EXPECT_EQ(ShortenPath(QString::fromUtf16(row.path), fits, row.style), QString::fromUtf16(row.shown))
        << QString::fromUtf16(row.path).toStdString() << " in " << row.room;
  }
}

}  // namespace
}  // namespace quarn
