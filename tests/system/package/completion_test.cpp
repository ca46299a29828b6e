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

  /// The completions of the last word. The words are in shell syntax.
  [[nodiscard]] std::set<std::string> Complete(const std::string& words) const {
    // compopt works only during a completion, and is not needed here.
    const std::string script =
        "cd \"$HOME\"; unset XDG_CONFIG_HOME; compopt() { :; }\n"
        "source '" QUARN_BUILD
        "/generated/linux/quarn-send.bash'\n"
        "COMP_WORDS=(quarn-send " +
        words +
        "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
        "_quarn_send quarn-send\n"
        "if ((${#COMPREPLY[@]} > 0)); then printf '%s\\n' \"${COMPREPLY[@]}\"; fi\n";
    std::ofstream(m_home / "script") << script;
    const std::vector<std::string> lines =
        LinesOf(OutputOf("HOME='" + m_home.string() + "' bash '" + (m_home / "script").string() + "'"));
    return {lines.begin(), lines.end()};
  }

  /// What fish offers at the end of the line.
  [[nodiscard]] std::set<std::string> CompleteInFish(const std::string& line) const {
    const std::string script =
        "source '" QUARN_BUILD "/generated/linux/quarn-send.fish'\ncomplete -C '" + line + "'\n";
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
  [[nodiscard]] std::set<std::string> OptionsForZsh() const {
    const std::string script =
        "_alternative() { :; }\n_arguments() { shift; for each; do print -r -- ${${each#\\*}%%\\[*}; done; "
        "}\n"
        "source '" QUARN_BUILD "/generated/linux/quarn-send.zsh'\n";
    std::ofstream(m_home / "script") << script;
    const std::vector<std::string> lines = LinesOf(OutputOf("zsh -f '" + (m_home / "script").string() + "'"));
    return {lines.begin(), lines.end()};
  }

 private:
  fs::path m_home;
};

using Words = std::set<std::string>;

TEST_F(Completion, OffersTheOptionsOfTheProgram) {
  EXPECT_EQ(Complete("--"), OptionsIn(OutputOfProgram("quarn-send", "--help")));
}

TEST_F(Completion, OtherShellsOfferThemToo) {
  std::set<std::string> options = OptionsIn(OutputOfProgram("quarn-send", "--help"));
  options.erase("--");
  EXPECT_EQ(CompleteInFish("quarn-send --"), options);
  EXPECT_EQ(OptionsForZsh(), options);
}

TEST_F(Completion, FishOffersValuesAndPorts) {
  EXPECT_EQ(CompleteInFish("quarn-send --parity "), (Words{"none", "odd", "even"}));
  EXPECT_EQ(CompleteInFish("quarn-send --port "), (Words{"COM3", "COM12"}));
}

TEST_F(Completion, CompletesAnOption) {
  EXPECT_EQ(Complete("--se"), Words{"--settings"});
  EXPECT_EQ(Complete("--port COM3 --ra"), Words{"--raw"});
}

TEST_F(Completion, OffersThePortsThatHaveNumbers) {
  EXPECT_EQ(Complete("--port ''"), (Words{"COM3", "COM12"}));
  EXPECT_EQ(Complete("--port COM1"), Words{"COM12"});
}

TEST_F(Completion, OffersConfigurationFilesAndFolders) {
  EXPECT_EQ(Complete("--settings ''"), (Words{"bench.qrn", "a b.qrn", ".config", "folder"}));
  EXPECT_EQ(Complete("--settings b"), Words{"bench.qrn"});
}

TEST_F(Completion, OffersTheValuesOfAnOption) {
  EXPECT_EQ(Complete("--parity ''"), (Words{"none", "odd", "even"}));
  EXPECT_EQ(Complete("--delimiter S"), Words{"STX_ETX"});
  EXPECT_EQ(Complete("--file n"), Words{"notes.txt"});
  EXPECT_EQ(Complete("--timeout ''"), Words{});
}

TEST_F(Completion, LeavesCommandsAlone) {
  EXPECT_EQ(Complete("''"), Words{});
  EXPECT_EQ(Complete("-- --se"), Words{});
  EXPECT_EQ(Complete("--port --settings b"), Words{});
}

}  // namespace
}  // namespace quarn
