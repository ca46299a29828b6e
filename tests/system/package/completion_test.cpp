#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "system/package/package_files.h"

namespace quarn {
namespace {

namespace fs = std::filesystem;

/// A folder with ports and files, and a shell that completes there.
class Completion : public testing::Test {
 protected:
  void SetUp() override {
    std::string folder = testing::TempDir() + "/quarn-completion-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    m_home = folder;
    fs::create_directories(m_home / ".config/Halvo/Quarn/ports");
    for (const char* port : {"COM3", "COM12"}) {
      fs::create_symlink("/dev/null", m_home / ".config/Halvo/Quarn/ports" / port);
    }
    for (const char* file : {"bench.qrn", "a b.qrn", "notes.txt"}) std::ofstream(m_home / file) << "x\n";
    fs::create_directory(m_home / "folder");
  }

  void TearDown() override {
    if (!m_home.empty()) fs::remove_all(m_home);
  }

  /// The completions of the last word of a command line, which is in shell syntax.
  [[nodiscard]] std::set<std::string> Complete(const std::string& line) const {
    // compopt works only during a completion, and is not needed here.
    const std::string script =
        "cd \"$HOME\"; unset XDG_CONFIG_HOME; compopt() { :; }\n"
        "source '" QUARN_BUILD
        "/generated/linux/completion.bash'\n"
        "COMP_WORDS=(" +
        line +
        "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
        "read -ra registered < <(complete -p \"${COMP_WORDS[0]##*/}\")\n"
        "\"${registered[2]}\" \"${COMP_WORDS[0]}\"\n"
        "if ((${#COMPREPLY[@]} > 0)); then printf '%s\\n' \"${COMPREPLY[@]}\"; fi\n";
    std::ofstream(m_home / "script") << script;
    const std::vector<std::string> lines =
        LinesOf(OutputOf("HOME='" + m_home.string() + "' bash '" + (m_home / "script").string() + "'"));
    return {lines.begin(), lines.end()};
  }

  /// What fish offers at the end of the line.
  [[nodiscard]] std::set<std::string> CompleteInFish(const std::string& line) const {
    // Read once for each of two programs, as in a session that uses both.
    const std::string source = "source '" QUARN_BUILD "/generated/linux/completion.fish'\n";
    const std::string script = source + source + "complete -C '" + line + "'\n";
    std::ofstream(m_home / "script") << script;
    std::set<std::string> words;
    for (const std::string& each :
         LinesOf(OutputOf("cd '" + m_home.string() + "' && env -u XDG_CONFIG_HOME HOME='" + m_home.string() +
                          "' fish --no-config script"))) {
      words.insert(each.substr(0, each.find('\t')));
    }
    return words;
  }

  /// What zsh's own completion is told. A terminal would be needed to press Tab.
  [[nodiscard]] std::set<std::string> OptionsForZsh(const std::string& program) const {
    const std::string script =
        "_alternative() { :; }\n"
        "_arguments() { for each; do each=${each#\\*}; [[ $each != --* ]] || print -r -- ${each%%\\[*}; "
        "done; }\n"
        "service=" +
        program + "\nsource '" QUARN_BUILD "/generated/linux/completion.zsh'\n";
    std::ofstream(m_home / "script") << script;
    const std::vector<std::string> lines = LinesOf(OutputOf("zsh -f '" + (m_home / "script").string() + "'"));
    return {lines.begin(), lines.end()};
  }

 private:
  fs::path m_home;
};

using Words = std::set<std::string>;

TEST_F(Completion, OffersTheOptionsOfTheProgramInEachShell) {
  for (const std::string program : {"quarn", "quarn-send", "quarn-device"}) {
    SCOPED_TRACE(program);
    Words options = OptionsIn(OutputOfProgram(program, "--help"));
    EXPECT_TRUE(options.contains("--help") && options.contains("--version"));
    EXPECT_EQ(Complete(program + " --"), options);
    options.erase("--");
    EXPECT_EQ(CompleteInFish(program + " --"), options);
    EXPECT_EQ(OptionsForZsh(program), options);
  }
}

TEST_F(Completion, OffersConfigurationFilesToTheWindow) {
  const Words expected{"bench.qrn", "a b.qrn", ".config", "folder"};
  EXPECT_EQ(Complete("quarn ''"), expected);
  EXPECT_EQ(Complete("/usr/bin/quarn b"), Words{"bench.qrn"});
  EXPECT_EQ(CompleteInFish("quarn b"), Words{"bench.qrn"});
}

TEST_F(Completion, OffersFilesToTheSimulatedInstrument) {
  EXPECT_EQ(Complete("quarn-device --rules n"), Words{"notes.txt"});
  EXPECT_EQ(Complete("quarn-device --rules notes.txt --link b"), Words{"bench.qrn"});
  EXPECT_EQ(Complete("quarn-device ''"), Words{});
  EXPECT_EQ(CompleteInFish("quarn-device --rules n"), Words{"notes.txt"});
}

TEST_F(Completion, FishOffersValuesAndPorts) {
  EXPECT_EQ(CompleteInFish("quarn-send --parity "), (Words{"none", "odd", "even"}));
  EXPECT_EQ(CompleteInFish("quarn-send --port "), (Words{"COM3", "COM12"}));
}

TEST_F(Completion, CompletesAnOption) {
  EXPECT_EQ(Complete("quarn-send --se"), Words{"--settings"});
  EXPECT_EQ(Complete("quarn-send --port COM3 --ra"), Words{"--raw"});
}

TEST_F(Completion, OffersThePortsThatHaveNumbers) {
  EXPECT_EQ(Complete("quarn-send --port ''"), (Words{"COM3", "COM12"}));
  EXPECT_EQ(Complete("quarn-send --port COM1"), Words{"COM12"});
}

TEST_F(Completion, OffersConfigurationFilesAndFolders) {
  EXPECT_EQ(Complete("quarn-send --settings ''"), (Words{"bench.qrn", "a b.qrn", ".config", "folder"}));
  EXPECT_EQ(Complete("quarn-send --settings b"), Words{"bench.qrn"});
}

TEST_F(Completion, OffersTheValuesOfAnOption) {
  EXPECT_EQ(Complete("quarn-send --parity ''"), (Words{"none", "odd", "even"}));
  EXPECT_EQ(Complete("quarn-send --delimiter S"), Words{"STX_ETX"});
  EXPECT_EQ(Complete("quarn-send --file n"), Words{"notes.txt"});
  EXPECT_EQ(Complete("quarn-send --timeout ''"), Words{});
}

TEST_F(Completion, LeavesCommandsAlone) {
  EXPECT_EQ(Complete("quarn-send ''"), Words{});
  EXPECT_EQ(Complete("quarn-send -- --se"), Words{});
  EXPECT_EQ(Complete("quarn-send --port --settings b"), Words{});
}

}  // namespace
}  // namespace quarn
