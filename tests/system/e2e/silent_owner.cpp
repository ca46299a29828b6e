#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// A program that owns the clipboard and the selection, and never hands anything over. It tells "owner" when
// it is, and then each question: the selection and the kind of text that was asked for.

namespace {

xcb_atom_t Atom(xcb_connection_t* display, const char* name) {
  xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
      display, xcb_intern_atom(display, 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr);
  const xcb_atom_t atom = reply != nullptr ? reply->atom : xcb_atom_t{XCB_NONE};
  std::free(reply);
  return atom;
}

void Tell(xcb_connection_t* display, xcb_atom_t atom, const char* end) {
  xcb_get_atom_name_reply_t* reply =
      xcb_get_atom_name_reply(display, xcb_get_atom_name(display, atom), nullptr);
  if (reply != nullptr) {
    std::printf("%.*s%s", xcb_get_atom_name_name_length(reply), xcb_get_atom_name_name(reply), end);
  }
  std::free(reply);
}

}  // namespace

int main() {
  xcb_connection_t* display = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(display) != 0) return 1;
  const xcb_window_t window = xcb_generate_id(display);
  xcb_create_window(display, XCB_COPY_FROM_PARENT, window,
                    xcb_setup_roots_iterator(xcb_get_setup(display)).data->root, 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  const std::array selections{Atom(display, "CLIPBOARD"), Atom(display, "PRIMARY")};
  for (const xcb_atom_t each : selections) xcb_set_selection_owner(display, window, each, XCB_CURRENT_TIME);
  for (const xcb_atom_t each : selections) {
    xcb_get_selection_owner_reply_t* reply =
        xcb_get_selection_owner_reply(display, xcb_get_selection_owner(display, each), nullptr);
    const bool owned = reply != nullptr && reply->owner == window;
    std::free(reply);
    if (!owned) return 1;
  }
  std::puts("owner");
  std::fflush(stdout);
  while (xcb_generic_event_t* event = xcb_wait_for_event(display)) {
    if ((event->response_type & ~0x80) == XCB_SELECTION_REQUEST) {
      const auto& asked = reinterpret_cast<const xcb_selection_request_event_t&>(*event);
      Tell(display, asked.selection, " ");
      Tell(display, asked.target, "\n");
      std::fflush(stdout);
    }
    std::free(event);
  }
  xcb_disconnect(display);
}
