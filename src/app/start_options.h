#pragma once

#include <string_view>
#include <vector>

namespace quarn {

// What the options of the command line ask for. Without Qt, because quarn.com uses it too.

/// The words of the command line, the program first.
using Words = std::vector<std::u16string_view>;

inline constexpr std::u16string_view kHelpOption = u"--help";
inline constexpr std::u16string_view kVersionOption = u"--version";
inline constexpr std::u16string_view kDemoOption = u"--demo";

[[nodiscard]] bool HasOption(const Words& words, std::u16string_view option);

/// The first word that begins with "-" and is not an option of the program or of Qt; empty if there is none.
/// A file with such a name must be given with its folder.
[[nodiscard]] std::u16string_view FirstWrongOption(const Words& words);

/// Whether the program answers on the terminal and ends, without a window.
[[nodiscard]] bool IsAnsweredAtOnce(const Words& words);

}  // namespace quarn
