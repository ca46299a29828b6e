#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "identity.h"
#include "system/package/package_files.h"

namespace quarn {
namespace {

const std::string kName = identity::kName;
const std::string kMaker = identity::kMaker;
const std::string kVersion = identity::kShortVersion;
const std::string kDate = identity::kBuildDate;
const std::string kYear = kDate.substr(0, 4);

/// The heading of the newest release. Unreleased changes may be above it.
std::string NewestRelease(const std::string& changelog) {
  for (const std::string& line : LinesOf(changelog)) {
    if (line.starts_with("## ") && line != "## [Unreleased]") return line;
  }
  return "no release";
}

/// The file has these lines, with any indentation.
void ExpectLines(const std::string& text, const std::vector<std::string>& expected) {
  std::vector<std::string> lines = LinesOf(text);
  for (std::string& line : lines) line.erase(0, std::min(line.find_first_not_of(' '), line.size()));
  for (const std::string& line : expected) {
    EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << "no line " << line;
  }
}

TEST(Identity, IsThatOfTheNewestReleaseInTheChangelog) {
  EXPECT_EQ(NewestRelease(SourceFile("CHANGELOG.md")), "## [" + kVersion + "] - " + kDate);
}

TEST(Identity, ShortVersionHasTwoDigitsAfterThePoint) {
  EXPECT_TRUE(std::regex_match(kVersion, std::regex(R"(\d+\.\d\d)"))) << kVersion;
}

TEST(Identity, IsWhatTheProgramsSay) {
  EXPECT_EQ(OutputOfProgram("quarn", "--version"),
            kName + "  (Ver. " + kVersion + "), build " + kDate + "\n");
  EXPECT_EQ(OutputOfProgram("quarn-send", "--version"), "quarn-send " + kVersion + "\n");
  EXPECT_EQ(OutputOfProgram("quarn-device", "--version"), "quarn-device " + kVersion + "\n");
}

/// The desktop entry passes the clicked file to the program. Some desktops do that anyway.
TEST(Identity, IsInTheDesktopEntry) {
  ExpectLines(FilledInFile("linux/quarn.desktop"), {"Name=" + kName, "Exec=quarn %f"});
}

/// The lines of a group of the desktop entry.
std::vector<std::string> GroupOf(const std::string& text, const std::string& heading) {
  std::vector<std::string> group;
  bool inside = false;
  for (const std::string& line : LinesOf(text)) {
    if (line.starts_with('[')) {
      inside = line == '[' + heading + ']';
    } else if (inside && !line.empty()) {
      group.push_back(line);
    }
  }
  return group;
}

TEST(Identity, HasItsActionsInTheDesktopEntry) {
  const std::string entry = FilledInFile("linux/quarn.desktop");
  const std::vector<std::string> head = GroupOf(entry, "Desktop Entry");
  EXPECT_EQ(std::count(head.begin(), head.end(), "Actions=Demo;Smaller;Guide;"), 1);
  EXPECT_EQ(GroupOf(entry, "Desktop Action Demo"),
            (std::vector<std::string>{"Name=Demo with a simulated instrument", "Exec=quarn --demo"}));
  EXPECT_EQ(GroupOf(entry, "Desktop Action Smaller"),
            (std::vector<std::string>{"Name=Start at three quarters of the size",
                                      "Exec=env QT_SCALE_FACTOR=0.75 quarn"}));
}

TEST(Identity, IsInTheMetadata) {
  ExpectLines(FilledInFile("linux/example.halvo.quarn.metainfo.xml"),
              {"<name>" + kName + "</name>", "<developer_name>" + kMaker + "</developer_name>",
               "<url type=\"homepage\">" + std::string(identity::kWebPage) + "</url>",
               "<url>" + std::string(identity::kWebPage) + "/" + kVersion + "</url>",
               "<release version=\"" + kVersion + "\" date=\"" + kDate + "\">"});
}

/// Software centres cut off longer ones in their lists.
TEST(Identity, HasAShortSummaryInTheMetadata) {
  const std::string text = FilledInFile("linux/example.halvo.quarn.metainfo.xml");
  std::smatch parts;
  ASSERT_TRUE(std::regex_search(text, parts, std::regex("<summary>([^<]+)</summary>")));
  EXPECT_LE(parts[1].length(), 35);
}

TEST(Identity, IsInTheManuals) {
  for (const std::string manual : {"QUARN", "QUARN\\-SEND", "QUARN\\-DEVICE"}) {
    std::string file = std::regex_replace(manual, std::regex(R"(\\)"), "");
    std::transform(file.begin(), file.end(), file.begin(), [](unsigned char c) { return std::tolower(c); });
    EXPECT_EQ(LinesOf(FilledInFile("linux/" + file + ".1")).front(),
              ".TH " + manual + " 1 \"" + kDate + "\" \"" + kName + " " + kVersion + "\" \"" + kMaker + "\"");
  }
}

TEST(Identity, IsInTheDebianPackage) {
  ExpectLines(Contents(QUARN_BUILD "/CPackConfig.cmake"),
              {"set(CPACK_PACKAGE_NAME \"quarn\")", "set(CPACK_PACKAGE_VENDOR \"" + kMaker + "\")",
               "set(CPACK_PACKAGE_VERSION \"" + kVersion + "\")", "set(CPACK_DEBIAN_PACKAGE_RELEASE \"1\")"});
  ExpectLines(FilledInFile("linux/copyright"),
              {"Upstream-Name: " + kName, "Copyright: " + kYear + " " + kMaker});
}

TEST(Identity, IsInTheDebianChangelog) {
  const std::vector<std::string> lines = LinesOf(FilledInFile("linux/changelog.Debian"));
  EXPECT_EQ(lines.front(), "quarn (" + kVersion + "-1) stable; urgency=medium");
  std::smatch parts;
  ASSERT_TRUE(std::regex_match(lines.back(), parts,
                               std::regex(R"( -- (\w+) <[^>]+>  (\w+, \d+ \w+ \d+) 00:00:00 \+0000)")));
  EXPECT_EQ(parts[1], kMaker);
  EXPECT_EQ(OutputOf("date --utc --date='" + parts[2].str() + "' +%F"), kDate + "\n");
}

TEST(Identity, IsInTheWindowsInstaller) {
  ExpectLines(FilledInFile("identity.nsh"),
              {"!define NAME \"" + kName + "\"", "!define MAKER \"" + kMaker + "\"",
               "!define VERSION \"" + kVersion + "\"",
               "!define FULL_VERSION \"" + std::string(identity::kVersion) + ".0\"",
               "!define WEB_PAGE \"" + std::string(identity::kWebPage) + "\""});
}

TEST(Identity, IsWhatTheReadmeAndTheLicenceSay) {
  const std::string readme = SourceFile("README.md");
  const std::regex packageName(R"(quarn[-_](\d+\.\d+))");
  int found = 0;
  for (std::sregex_iterator each(readme.begin(), readme.end(), packageName), end; each != end; ++each) {
    EXPECT_EQ((*each)[1], kVersion) << (*each)[0];
    ++found;
  }
  EXPECT_GE(found, 3);
  ExpectLines(SourceFile("LICENSE"), {"Copyright (c) " + kYear + " " + kMaker});
}

TEST(Identity, IsInTheDemonstrationFile) {
  const std::string first = LinesOf(SourceFile("packaging/demo/demo.qrn")).front();
  EXPECT_EQ(first, "\xEF\xBB\xBF.VER=" + std::string(identity::kNameAndVersion) + "\r");
}

}  // namespace
}  // namespace quarn
