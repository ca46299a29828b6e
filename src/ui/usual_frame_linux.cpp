#include "ui/usual_frame.h"

#include <poll.h>

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <algorithm>

#include "ui/x11_linux.h"

namespace quarn {
namespace {

constexpr int kAnswerMs = 100;

/// A question of the window managers' common rules: what frame would this window, which is not shown, get?
class FrameQuestion {
 public:
  FrameQuestion() {
    if (xcb_connection_has_error(m_connection.get()) != 0) return;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    m_question = AtomOf(m_connection.get(), "_NET_REQUEST_FRAME_EXTENTS");
    m_answer = AtomOf(m_connection.get(), "_NET_FRAME_EXTENTS");
  }

  /// Left, top, right, bottom, in pixels of the screen.
  std::optional<QMargins> Ask() {
    if (m_root == XCB_NONE || !IsSupported()) return std::nullopt;
    m_window = xcb_generate_id(m_connection.get());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection.get(), XCB_COPY_FROM_PARENT, m_window, m_root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = m_window;
    message.type = m_question;
    xcb_send_event(m_connection.get(), 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(m_connection.get());
    return IsAnswered() ? Read() : std::nullopt;
  }

 private:
  XcbReply<xcb_get_property_reply_t> Property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
    constexpr std::uint32_t kMostWords = 1024;
    const auto asked = xcb_get_property(m_connection.get(), 0, window, name, type, 0, kMostWords);
    return XcbReply<xcb_get_property_reply_t>(xcb_get_property_reply(m_connection.get(), asked, nullptr));
  }

  bool IsSupported() {
    const auto reply = Property(m_root, AtomOf(m_connection.get(), "_NET_SUPPORTED"), XCB_ATOM_ATOM);
    if (!reply || reply->format != 32) return false;
    const auto* const first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    const xcb_atom_t* const end = first + reply->value_len;
    return std::find(first, end, m_question) != end;
  }

  bool IsAnswered() {
    const QDeadlineTimer end(kAnswerMs);
    while (!end.hasExpired() && xcb_connection_has_error(m_connection.get()) == 0) {
      if (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
        if (KindOfEvent(*event) == XCB_PROPERTY_NOTIFY &&
            reinterpret_cast<const xcb_property_notify_event_t&>(*event).atom == m_answer) {
          return true;
        }
        continue;
      }
      pollfd display{.fd = xcb_get_file_descriptor(m_connection.get()), .events = POLLIN, .revents = 0};
      poll(&display, 1, static_cast<int>(end.remainingTime()));
    }
    return false;
  }

  std::optional<QMargins> Read() {
    constexpr int kSides = 4;
    const auto reply = Property(m_window, m_answer, XCB_ATOM_CARDINAL);
    if (!reply || reply->format != 32 || reply->value_len != kSides) return std::nullopt;
    const auto* const sides = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    const auto side = [sides](int i) { return static_cast<int>(sides[i]); };
    return QMargins(side(0), side(2), side(1), side(3));
  }

  const XcbConnection m_connection = ConnectToDisplay();
  xcb_window_t m_root = XCB_NONE;
  xcb_window_t m_window = XCB_NONE;
  xcb_atom_t m_question = XCB_NONE;
  xcb_atom_t m_answer = XCB_NONE;
};

}  // namespace

std::optional<QMargins> FrameOfNewWindows() {
  if (QGuiApplication::platformName() != u"xcb") return std::nullopt;
  const std::optional<QMargins> frame = FrameQuestion().Ask();
  // Some answer before they know.
  if (!frame || frame->isNull()) return std::nullopt;
  return *frame / qGuiApp->devicePixelRatio();
}

}  // namespace quarn
