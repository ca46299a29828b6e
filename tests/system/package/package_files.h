#pragma once

#include <set>
#include <string>
#include <vector>

namespace quarn {

/// The content of a file. If it cannot be read, the test fails.
std::string Contents(const std::string& path);

/// A file of the source tree.
std::string SourceFile(const std::string& name);

/// A file that the identity was filled into, for all systems or for Linux ("linux/...").
std::string FilledInFile(const std::string& name);

std::vector<std::string> LinesOf(const std::string& text);

/// The output of a shell command. If it fails, the test fails.
std::string OutputOf(const std::string& shellCommand);

/// The output of one of the programs with this option.
std::string OutputOfProgram(const std::string& program, const std::string& option);

/// The long options in a text, also "--" alone.
std::set<std::string> OptionsIn(const std::string& text);

}  // namespace quarn
