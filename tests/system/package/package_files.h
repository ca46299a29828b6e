#pragma once

#include <set>
#include <string>
#include <vector>

namespace quarn {

/// What a file holds. A file that cannot be read fails the test.
std::string Contents(const std::string& path);

/// A file of the source tree.
std::string SourceFile(const std::string& name);

/// A file that the identity was filled into, for all systems or for Linux ("linux/...").
std::string FilledInFile(const std::string& name);

std::vector<std::string> LinesOf(const std::string& text);

/// What a shell command prints. One that fails makes the test fail.
std::string OutputOf(const std::string& shellCommand);

/// What one of the programs prints when it gets this option.
std::string OutputOfProgram(const std::string& program, const std::string& option);

/// The long options that a text mentions, "--" alone among them.
std::set<std::string> OptionsIn(const std::string& text);

}  // namespace quarn
