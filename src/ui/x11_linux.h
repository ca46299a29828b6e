#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace quarn {

// Questions to the X server on a connection of our own, beside Qt's.

struct XcbFreed {
  void operator()(void* each) const { std::free(each); }
};
template <typename T>
using XcbReply = std::unique_ptr<T, XcbFreed>;

struct XcbDisconnected {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using XcbConnection = std::unique_ptr<xcb_connection_t, XcbDisconnected>;

/// Never null; ask xcb_connection_has_error whether it works.
inline XcbConnection ConnectToDisplay() { return XcbConnection(xcb_connect(nullptr, nullptr)); }

/// The number that the server gives to a name; XCB_NONE if the connection is broken.
inline xcb_atom_t AtomOf(xcb_connection_t* connection, std::string_view name) {
  const auto asked = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, asked, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_NONE};
}

/// The kind of an event, whoever sent it.
inline int KindOfEvent(const xcb_generic_event_t& event) {
  constexpr int kSentByAProgram = 0x80;
  return event.response_type & ~kSentByAProgram;
}

}  // namespace quarn
