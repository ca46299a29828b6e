#include "app/start_options.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quarn {
namespace {

struct QtOption {
  std::u16string_view name;  ///< behind one dash or two
  bool takesValue;
};
/// Options that Qt's application object takes from the arguments; the session manager passes one of them.
constexpr std::array<QtOption, 18> kQtOptions = {{{u"display", true},
                                                  {u"dograb", false},
                                                  {u"geometry", true},
                                                  {u"icon", true},
                                                  {u"nograb", false},
                                                  {u"platform", true},
                                                  {u"platformpluginpath", true},
                                                  {u"platformtheme", true},
                                                  {u"plugin", true},
                                                  {u"qwindowgeometry", true},
                                                  {u"qwindowicon", true},
                                                  {u"qwindowtitle", true},
                                                  {u"reverse", false},
                                                  {u"session", true},
                                                  {u"style", true},
                                                  {u"stylesheet", true},
                                                  {u"title", true},
                                                  {u"widgetcount", false}}};

/// The number of words of the option that starts here; 0 if it is not one of Qt's.
std::size_t WordsOfQtOption(std::u16string_view word) {
  const std::u16string_view name = word.substr(word.starts_with(u"--") ? 2 : 1);
  const std::size_t equals = name.find(u'=');
  const std::u16string_view bare = name.substr(0, equals);
  const auto* const found =
      std::ranges::find_if(kQtOptions, [bare](const QtOption& each) { return bare == each.name; });
  if (found == kQtOptions.end()) return 0;
  return found->takesValue && equals == std::u16string_view::npos ? 2 : 1;
}

}  // namespace

bool HasOption(const Words& words, std::u16string_view option) {
  return std::ranges::find(words, option) != words.end();
}

std::u16string_view FirstWrongOption(const Words& words) {
  for (std::size_t i = 1; i < words.size() && words[i].starts_with(u'-');) {
    const std::size_t count = words[i] == kDemoOption ? 1 : WordsOfQtOption(words[i]);
    if (count == 0) return words[i];
    i += count;
  }
  return {};
}

bool IsAnsweredAtOnce(const Words& words) {
  return HasOption(words, kHelpOption) || HasOption(words, kVersionOption) ||
         !FirstWrongOption(words).empty();
}

}  // namespace quarn
