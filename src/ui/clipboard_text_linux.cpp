// Qt asks an X11 owner twice and waits five seconds each time, with all windows frozen. So this code asks the
// owner itself, on its own connection.

#include <poll.h>

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <array>
#include <optional>
#include <string_view>

#include "ui/clipboard_text.h"
#include "ui/input_hold.h"
#include "ui/x11_linux.h"

namespace quarn {
namespace {

/// One request to the owner of the clipboard.
class Question {
 public:
  Question(InputHold& hold, QClipboard::Mode mode, int limitMs)
      : m_hold(hold), m_deadline(limitMs, Qt::PreciseTimer), m_connection(ConnectToDisplay()) {
    if (xcb_connection_has_error(m_connection.get()) != 0) return;
    const xcb_setup_t* setup = xcb_get_setup(m_connection.get());
    const xcb_screen_t* screen = xcb_setup_roots_iterator(setup).data;
    m_window = xcb_generate_id(m_connection.get());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection.get(), XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    m_selection = Atom(mode == QClipboard::Selection ? "PRIMARY" : "CLIPBOARD");
    m_property = Atom("QUARN_PASTE");
    m_inPieces = Atom("INCR");
  }

  /// Returns nullopt if the display or the owner does not answer in time.
  std::optional<QString> Ask() {
    if (m_window == XCB_NONE) return std::nullopt;
    for (const char* kind : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING"}) {
      xcb_convert_selection(m_connection.get(), m_window, m_selection, Atom(kind), m_property,
                            XCB_CURRENT_TIME);
      xcb_flush(m_connection.get());
      const std::optional<bool> has = IsAnswered();
      if (!has) return std::nullopt;
      if (!*has) continue;
      const std::optional<QByteArray> bytes = Read();
      if (!bytes) return std::nullopt;
      return kind == std::string_view("STRING") ? QString::fromLatin1(*bytes) : QString::fromUtf8(*bytes);
    }
    return std::nullopt;
  }

 private:
  xcb_atom_t Atom(std::string_view name) { return AtomOf(m_connection.get(), name); }

  /// The next event; null if the time is over or the display is gone.
  XcbReply<xcb_generic_event_t> Next() {
    constexpr int kStepMs = 10;
    while (xcb_connection_has_error(m_connection.get()) == 0) {
      if (XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) return event;
      if (m_deadline.hasExpired()) break;
      m_hold.Pump();
      pollfd display{.fd = xcb_get_file_descriptor(m_connection.get()), .events = POLLIN, .revents = 0};
      poll(&display, 1, kStepMs);
    }
    return nullptr;
  }

  /// Whether the owner has a text of this kind; nullopt if it does not say.
  std::optional<bool> IsAnswered() {
    while (const auto event = Next()) {
      if (KindOfEvent(*event) != XCB_SELECTION_NOTIFY) continue;
      return reinterpret_cast<const xcb_selection_notify_event_t&>(*event).property != XCB_NONE;
    }
    return std::nullopt;
  }

  std::optional<QByteArray> Read() {
    xcb_atom_t type = XCB_NONE;
    QByteArray bytes = Take(type);
    if (type != m_inPieces) return bytes;
    // A long text comes in pieces: each is stored after the previous one was read; the last is empty.
    QByteArray whole;
    while (const auto event = Next()) {
      if (KindOfEvent(*event) != XCB_PROPERTY_NOTIFY) continue;
      const auto& changed = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
      if (changed.atom != m_property || changed.state != XCB_PROPERTY_NEW_VALUE) continue;
      const QByteArray piece = Take(type);
      whole.append(piece);
      if (piece.isEmpty() || whole.size() >= kMostBytes) return whole;
    }
    return std::nullopt;
  }

  /// Reads and deletes what the owner stored, at most a megabyte.
  QByteArray Take(xcb_atom_t& type) {
    constexpr std::uint32_t kMostWords = kMostBytes / 4;
    const auto asked = xcb_get_property(m_connection.get(), 1, m_window, m_property,
                                        XCB_GET_PROPERTY_TYPE_ANY, 0, kMostWords);
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection.get(), asked, nullptr));
    if (!reply) return {};
    type = reply->type;
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
  }

  static constexpr int kMostBytes = 1024 * 1024;

  InputHold& m_hold;
  const QDeadlineTimer m_deadline;
  const XcbConnection m_connection;
  xcb_window_t m_window = XCB_NONE;
  xcb_atom_t m_selection = XCB_NONE;
  xcb_atom_t m_property = XCB_NONE;
  xcb_atom_t m_inPieces = XCB_NONE;
};

}  // namespace

std::optional<QString> ClipboardText(InputHold& hold, QClipboard::Mode mode, int limitMs) {
  // For the program itself, and on Wayland, there is no owner to wait for.
  const QClipboard& clipboard = *QGuiApplication::clipboard();
  const bool own = mode == QClipboard::Selection ? clipboard.ownsSelection() : clipboard.ownsClipboard();
  if (QGuiApplication::platformName() != u"xcb" || own) return ClipboardTextFromQt(mode);
  hold.Begin();
  std::optional<QString> text = Question(hold, mode, limitMs).Ask();
  hold.End();
  return text;
}

}  // namespace quarn
