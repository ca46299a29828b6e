#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace quarn::test {
namespace {

/// The rooms in the order of the table, and for each the rooms that its files may include.
using Table = std::vector<std::pair<std::string, std::set<std::string>>>;

Table ParseTable(std::istream& text) {
  Table table;
  for (std::string line; std::getline(text, line);) {
    const auto colon = line.find(':');
    if (line.empty() || line.front() == '#' || colon == std::string::npos) continue;
    std::istringstream rest(line.substr(colon + 1));
    auto& allowed = table.emplace_back(line.substr(0, colon), std::set<std::string>()).second;
    for (std::string word; rest >> word;) allowed.insert(word);
  }
  return table;
}

Table::const_iterator RowOf(const Table& table, const std::string& room) {
  return std::find_if(table.begin(), table.end(), [&](const auto& row) { return row.first == room; });
}

std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

/// The program's own includes in a source, as written. A generated header has no folder, and so no room.
std::vector<std::string> IncludesOf(const std::string& text) {
  static const std::regex kInclude(R"re((?:^|\n)[ \t]*#[ \t]*include[ \t]*"([^"\n]+/[^"\n]+)")re");
  std::vector<std::string> includes;
  for (std::sregex_iterator it(text.begin(), text.end(), kInclude), end; it != end; ++it) {
    includes.push_back((*it)[1].str());
  }
  return includes;
}

/// The includes of a file that its room may not use.
std::vector<std::string> Forbidden(const Table& table, const std::string& room, const std::string& text) {
  std::vector<std::string> found;
  const auto row = RowOf(table, room);
  for (const std::string& include : IncludesOf(text)) {
    const std::string folder = FolderOf(include);
    const bool allowed = folder == room || (row != table.end() && row->second.contains(folder));
    if (!allowed) found.push_back(include);
  }
  return found;
}

std::string TextOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

const std::filesystem::path kTree = QUARN_SOURCE;
const std::filesystem::path kSource = kTree / "src";

Table TheTable() {
  std::ifstream file(kTree / "cmake/rooms.txt");
  return ParseTable(file);
}

std::vector<std::filesystem::path> SourcesIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") files.push_back(entry.path());
  }
  return files;
}

TEST(Rooms, EveryIncludeIsOneThatTheTableAllows) {
  const Table table = TheTable();
  ASSERT_FALSE(table.empty());
  for (const auto& [room, allowed] : table) {
    const auto files = SourcesIn(kSource / room);
    EXPECT_FALSE(files.empty()) << room << " is in the table, and there is nothing in it";
    for (const auto& file : files) {
      for (const std::string& include : Forbidden(table, room, TextOf(file))) {
        ADD_FAILURE() << file.lexically_relative(kSource) << " includes " << include
                      << ", which cmake/rooms.txt does not let " << room << "/ use";
      }
    }
  }
}

/// A folder that is missing in the table would not be checked.
TEST(Rooms, TheTableKnowsEveryFolderOfSources) {
  const Table table = TheTable();
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSource)) {
    if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") continue;
    const std::string room = entry.path().parent_path().lexically_relative(kSource).generic_string();
    EXPECT_NE(RowOf(table, room), table.end()) << entry.path().lexically_relative(kSource);
  }
}

TEST(Rooms, NamesInTheTableAreThere) {
  for (const auto& [room, allowed] : TheTable()) {
    for (const std::string& name : allowed) {
      EXPECT_TRUE(std::filesystem::exists(kSource / name)) << room << " may use " << name;
    }
  }
}

/// Lower rooms come first in the table, so that no arrows form a circle.
TEST(Rooms, EachUsesOnlyThoseAboveItInTheTable) {
  std::set<std::string> above;
  for (const auto& [room, allowed] : TheTable()) {
    for (const std::string& other : allowed) EXPECT_TRUE(above.contains(other)) << room << " uses " << other;
    above.insert(room);
  }
}

TEST(Rooms, AForbiddenIncludeIsSeen) {
  std::istringstream text("# a table\nlow:\nhigh: low\n");
  const Table table = ParseTable(text);
  using List = std::vector<std::string>;
  EXPECT_EQ(Forbidden(table, "high", "#include \"low/a.h\"\n#include \"high/b.h\"\n"), List());
  EXPECT_EQ(Forbidden(table, "high", "#include \"other/window.h\"\n"), List{"other/window.h"});
  EXPECT_EQ(Forbidden(table, "low", "// first\n  #  include \"high/b.h\"\n"), List{"high/b.h"});
  EXPECT_EQ(Forbidden(table, "low", "#include \"low/c.h\"\n#include \"identity.h\"\n#include <x/y>\n"),
            List());
  EXPECT_EQ(Forbidden(table, "unknown", "#include \"low/a.h\"\n"), List{"low/a.h"});
}

}  // namespace
}  // namespace quarn::test
