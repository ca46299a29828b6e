#include "system/package/package_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>

namespace quarn {

std::string Contents(const std::string& path) {
  const std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  EXPECT_TRUE(file.is_open() && !text.str().empty()) << path << " has nothing to read";
  return text.str();
}

std::string SourceFile(const std::string& name) { return Contents(QUARN_SOURCE "/" + name); }

std::string FilledInFile(const std::string& name) { return Contents(QUARN_BUILD "/generated/" + name); }

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string OutputOf(const std::string& shellCommand) {
  std::FILE* pipe = popen(shellCommand.c_str(), "re");
  if (pipe == nullptr) {
    ADD_FAILURE() << shellCommand << " cannot be started";
    return {};
  }
  std::string output;
  std::array<char, 4096> bytes{};
  while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), pipe)) {
    output.append(bytes.data(), count);
  }
  EXPECT_EQ(pclose(pipe), 0) << shellCommand;
  return output;
}

std::string OutputOfProgram(const std::string& program, const std::string& option) {
  return OutputOf("'" QUARN_PROGRAMS "/" + program + "' " + option);
}

std::set<std::string> OptionsIn(const std::string& text) {
  // Not inside a word, and not the arrow of a rule.
  static const std::regex option(R"((^|[^-\w])(--[a-z-]*)(?=[^-\w>]|$))");
  std::set<std::string> options;
  for (std::sregex_iterator each(text.begin(), text.end(), option), end; each != end; ++each) {
    options.insert((*each)[2]);
  }
  return options;
}

}  // namespace quarn
