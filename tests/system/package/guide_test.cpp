// The guide's page, compared with its text.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "system/package/package_files.h"

namespace quarn {
namespace {

std::string Page() { return FilledInFile("guide/index.html"); }

/// The guide's lines outside its examples.
std::vector<std::string> TextLines() {
  std::vector<std::string> lines;
  bool inExample = false;
  for (const std::string& line : LinesOf(SourceFile("docs/guide.md"))) {
    if (line.starts_with("```")) inExample = !inExample;
    if (!inExample) lines.push_back(line);
  }
  return lines;
}

/// The first group of each match.
std::vector<std::string> AllIn(const std::string& text, const std::string& expression) {
  const std::regex regex(expression);
  std::vector<std::string> found;
  for (std::sregex_iterator each(text.begin(), text.end(), regex), end; each != end; ++each) {
    found.push_back((*each)[1]);
  }
  return found;
}

TEST(GuidePage, HasEveryHeading) {
  std::vector<std::string> expected;
  for (const std::string& line : TextLines()) {
    std::smatch parts;
    if (std::regex_match(line, parts, std::regex("#+ (.*)"))) expected.push_back(parts[1]);
  }
  EXPECT_GT(expected.size(), 30U);
  EXPECT_EQ(AllIn(Page(), "<h[1-6] id=\"[^\"]+\">([^<]*)</h[1-6]>"), expected);
}

TEST(GuidePage, HasEveryRowOfTheTables) {
  const std::vector<std::string> lines = TextLines();
  const auto rows =
      std::ranges::count_if(lines, [](const std::string& line) { return line.starts_with("| "); });
  EXPECT_GT(rows, 100);
  EXPECT_EQ(AllIn(Page(), "(<tr>)").size(), static_cast<std::size_t>(rows));
}

TEST(GuidePage, HasEveryLineOfTheExamples) {
  std::string page = Page();
  using Pair = std::pair<const char*, const char*>;
  for (const auto& [entity, character] : {Pair{"&quot;", "\""},
                                          {"&#(39|x27);", "'"},
                                          {"&#47;", "/"},
                                          {"&(lt|#60);", "<"},
                                          {"&(gt|#62);", ">"},
                                          {"&(amp|#38);", "&"}}) {
    page = std::regex_replace(page, std::regex(entity), character);
  }
  bool inExample = false;
  int found = 0;
  for (const std::string& line : LinesOf(SourceFile("docs/guide.md"))) {
    if (line.starts_with("```")) {
      inExample = !inExample;
    } else if (inExample) {
      EXPECT_NE(page.find(line), std::string::npos) << line;
      ++found;
    }
  }
  EXPECT_GT(found, 50);
}

TEST(GuidePage, LinksLeadToHeadings) {
  const std::string page = Page();
  const std::vector<std::string> places = AllIn(page, " id=\"([^\"]+)\"");
  const std::vector<std::string> links = AllIn(page, " href=\"([^\"]+)\"");
  EXPECT_GT(links.size(), 30U);
  for (const std::string& link : links) {
    if (link.starts_with("https://")) continue;
    ASSERT_TRUE(link.starts_with("#")) << link << " is another file";
    EXPECT_EQ(std::ranges::count(places, link.substr(1)), 1) << link;
  }
}

TEST(GuidePage, HasItsPicturesBesideIt) {
  const std::vector<std::string> pictures = AllIn(Page(), " src=\"([^\"]+)\"");
  EXPECT_EQ(pictures.size(), AllIn(SourceFile("docs/guide.md"), R"((!\[[^\]]*\]\())").size());
  for (const std::string& picture : pictures) {
    EXPECT_EQ(Contents(QUARN_BUILD "/generated/guide/" + picture), SourceFile("docs/" + picture)) << picture;
  }
}

}  // namespace
}  // namespace quarn
