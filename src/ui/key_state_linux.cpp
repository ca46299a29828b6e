#include "ui/key_state.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>

namespace quarn {

std::optional<bool> IsKeyDown(quint32 scanCode) {
  constexpr quint32 kLastKey = 255;
  constexpr quint32 kBits = 8;
  if (scanCode == 0 || scanCode > kLastKey || QGuiApplication::platformName() != u"xcb") return std::nullopt;
  const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> display(xcb_connect(nullptr, nullptr),
                                                                             xcb_disconnect);
  const auto asked = xcb_query_keymap(display.get());
  const std::unique_ptr<xcb_query_keymap_reply_t, decltype(&std::free)> reply(
      xcb_query_keymap_reply(display.get(), asked, nullptr), std::free);
  if (!reply) return std::nullopt;
  return (reply->keys[scanCode / kBits] >> (scanCode % kBits) & 1) != 0;
}

}  // namespace quarn
