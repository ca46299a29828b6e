#include "ui/key_state.h"

#include <QGuiApplication>

#include "ui/x11_linux.h"

namespace quarn {

std::optional<bool> IsKeyDown(quint32 scanCode) {
  constexpr quint32 kLastKey = 255;
  constexpr quint32 kBits = 8;
  if (scanCode == 0 || scanCode > kLastKey || QGuiApplication::platformName() != u"xcb") return std::nullopt;
  const XcbConnection display = ConnectToDisplay();
  const auto asked = xcb_query_keymap(display.get());
  const XcbReply<xcb_query_keymap_reply_t> reply(xcb_query_keymap_reply(display.get(), asked, nullptr));
  if (!reply) return std::nullopt;
  return (reply->keys[scanCode / kBits] >> (scanCode % kBits) & 1) != 0;
}

}  // namespace quarn
