#include <wayland-client.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string_view>

#include "app/wayland_output.h"

namespace quarn {
namespace {

// The protocol "xdg-output". Its manager makes an object for an output, which says how large windows see it.
enum ManagerRequest : std::uint32_t { GetXdgOutput = 1 };
enum XdgOutputEvent : std::uint32_t { LogicalSize = 1, Name = 3 };
constexpr std::uint32_t kNewestManager = 3;
constexpr std::uint32_t kNewestOutput = 4;

template <std::size_t N>
using Messages = std::array<wl_message, N>;

/// The library's description of an object with these requests and events.
template <std::size_t Requests, std::size_t Events>
wl_interface Described(const char* name, const Messages<Requests>& requests, const Messages<Events>& events) {
  return {name, kNewestManager, int{Requests}, requests.data(), int{Events}, events.data()};
}

/// The names of all requests and events, and the kinds of their arguments.
struct XdgOutputProtocol {
  std::array<const wl_interface*, 2> none{};
  const Messages<1> outputRequests{{{"destroy", "", none.data()}}};
  const Messages<5> outputEvents{{{"logical_position", "ii", none.data()},
                                  {"logical_size", "ii", none.data()},
                                  {"done", "", none.data()},
                                  {"name", "2s", none.data()},
                                  {"description", "2s", none.data()}}};
  const wl_interface output = Described("zxdg_output_v1", outputRequests, outputEvents);
  std::array<const wl_interface*, 2> made{&output, &wl_output_interface};
  const Messages<2> managerRequests{{{"destroy", "", none.data()}, {"get_xdg_output", "no", made.data()}}};
  const wl_interface manager = Described("zxdg_output_manager_v1", managerRequests, Messages<0>{});
};

struct Freed {
  void operator()(wl_display* display) const { wl_display_disconnect(display); }
  void operator()(wl_registry* registry) const { wl_registry_destroy(registry); }
  void operator()(wl_output* output) const { wl_output_destroy(output); }
  void operator()(wl_proxy* proxy) const { wl_proxy_destroy(proxy); }
};
template <typename T>
using Owned = std::unique_ptr<T, Freed>;

struct Output {
  Owned<wl_output> output;
  Owned<wl_proxy> xdgOutput{};
  QString name{};
  OutputSize size{};
};

Output& OutputOf(void* data) { return *static_cast<Output*>(data); }

const wl_output_listener kOutputListener{
    .geometry = [](void*, wl_output*, int, int, int, int, int, const char*, const char*, int) {},
    .mode =
        [](void* data, wl_output*, std::uint32_t flags, int width, int height, int) {
          if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) OutputOf(data).size.pixels = {width, height};
        },
    .done = [](void*, wl_output*) {},
    .scale = [](void* data, wl_output*, int factor) { OutputOf(data).size.wholeScale = factor; },
    .name = [](void* data, wl_output*, const char* name) { OutputOf(data).name = QString::fromUtf8(name); },
    .description = [](void*, wl_output*, const char*) {}};

int TakeXdgOutputEvent(const void*, void* target, std::uint32_t event, const wl_message*,
                       wl_argument* arguments) {
  Output& output = OutputOf(wl_proxy_get_user_data(static_cast<wl_proxy*>(target)));
  if (event == LogicalSize) output.size.logical = {arguments[0].i, arguments[1].i};
  if (event == Name) output.name = QString::fromUtf8(arguments[0].s);
  return 0;
}

/// One connection, for one question.
class OutputQuestion {
 public:
  std::optional<OutputSize> Ask(const QString& name) {
    if (!m_display) return std::nullopt;
    m_registry.reset(wl_display_get_registry(m_display.get()));
    wl_registry_add_listener(m_registry.get(), &kRegistryListener, this);
    // The program has its answers on another connection, so they come on this one as well.
    if (wl_display_roundtrip(m_display.get()) < 0 || !m_manager) return std::nullopt;
    for (Output& each : m_outputs) AskForLogicalSize(each);
    if (wl_display_roundtrip(m_display.get()) < 0) return std::nullopt;
    const auto found = std::find_if(m_outputs.begin(), m_outputs.end(),
                                    [&name](const Output& each) { return each.name == name; });
    if (found != m_outputs.end()) return found->size;
    return m_outputs.size() == 1 ? std::optional(m_outputs.front().size) : std::nullopt;
  }

 private:
  static void TakeGlobal(void* data, wl_registry* registry, std::uint32_t id, const char* interface,
                         std::uint32_t version) {
    auto& question = *static_cast<OutputQuestion*>(data);
    if (interface == std::string_view(wl_output_interface.name)) {
      void* const bound =
          wl_registry_bind(registry, id, &wl_output_interface, std::min(version, kNewestOutput));
      question.m_outputs.push_back({.output = Owned<wl_output>(static_cast<wl_output*>(bound))});
      Output& output = question.m_outputs.back();
      wl_output_add_listener(output.output.get(), &kOutputListener, &output);
    } else if (interface == std::string_view(question.m_protocol.manager.name)) {
      void* const bound =
          wl_registry_bind(registry, id, &question.m_protocol.manager, std::min(version, kNewestManager));
      question.m_manager.reset(static_cast<wl_proxy*>(bound));
    }
  }

  void AskForLogicalSize(Output& output) {
    output.xdgOutput.reset(wl_proxy_marshal_flags(m_manager.get(), GetXdgOutput, &m_protocol.output,
                                                  wl_proxy_get_version(m_manager.get()), 0, nullptr,
                                                  output.output.get()));
    wl_proxy_add_dispatcher(output.xdgOutput.get(), &TakeXdgOutputEvent, nullptr, &output);
  }

  static constexpr wl_registry_listener kRegistryListener{
      .global = &TakeGlobal, .global_remove = [](void*, wl_registry*, std::uint32_t) {}};

  XdgOutputProtocol m_protocol;
  const Owned<wl_display> m_display{wl_display_connect(nullptr)};
  Owned<wl_registry> m_registry;
  Owned<wl_proxy> m_manager;
  std::list<Output> m_outputs;
};

}  // namespace

std::optional<OutputSize> WaylandOutput(const QString& name) { return OutputQuestion().Ask(name); }

}  // namespace quarn
