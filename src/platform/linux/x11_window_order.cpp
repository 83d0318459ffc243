#include "platform/linux/x11_window_order.h"

#include <dlfcn.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace corvane {

namespace {

constexpr std::uint32_t kWordsAtMost = 4096;  // windows of a list; no desktop holds more
constexpr std::uint32_t kFromPager = 2;       // who asks, in the words of the window managers' agreement (EWMH)

// The few functions that are used, found by name at the first use.
struct Xcb {
  decltype(&xcb_connect) connect = nullptr;
  decltype(&xcb_connection_has_error) connectionHasError = nullptr;
  decltype(&xcb_disconnect) disconnect = nullptr;
  decltype(&xcb_get_setup) getSetup = nullptr;
  decltype(&xcb_setup_roots_iterator) rootsIterator = nullptr;
  decltype(&xcb_intern_atom) internAtom = nullptr;
  decltype(&xcb_intern_atom_reply) internAtomReply = nullptr;
  decltype(&xcb_get_property) getProperty = nullptr;
  decltype(&xcb_get_property_reply) getPropertyReply = nullptr;
  decltype(&xcb_get_property_value) getPropertyValue = nullptr;
  decltype(&xcb_get_property_value_length) getPropertyValueLength = nullptr;
  decltype(&xcb_send_event) sendEvent = nullptr;
  decltype(&xcb_flush) flush = nullptr;

  // Stays loaded; absent where the machine has no such library.
  [[nodiscard]] static const Xcb* load() {
    static const auto loaded = []() -> std::unique_ptr<Xcb> {
      void* library = ::dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
      if (library == nullptr) return nullptr;
      auto xcb = std::make_unique<Xcb>();
      bool complete = true;
      const auto find = [&](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
        complete = complete && function != nullptr;
      };
      find(xcb->connect, "xcb_connect");
      find(xcb->connectionHasError, "xcb_connection_has_error");
      find(xcb->disconnect, "xcb_disconnect");
      find(xcb->getSetup, "xcb_get_setup");
      find(xcb->rootsIterator, "xcb_setup_roots_iterator");
      find(xcb->internAtom, "xcb_intern_atom");
      find(xcb->internAtomReply, "xcb_intern_atom_reply");
      find(xcb->getProperty, "xcb_get_property");
      find(xcb->getPropertyReply, "xcb_get_property_reply");
      find(xcb->getPropertyValue, "xcb_get_property_value");
      find(xcb->getPropertyValueLength, "xcb_get_property_value_length");
      find(xcb->sendEvent, "xcb_send_event");
      find(xcb->flush, "xcb_flush");
      return complete ? std::move(xcb) : nullptr;
    }();
    return loaded.get();
  }
};

class X11WindowOrder final : public WindowOrder {
 public:
  ~X11WindowOrder() override { disconnect(); }

  [[nodiscard]] std::optional<pid_t> activeProcess() override {
    if (!connected()) return std::nullopt;
    const auto active = words(root_, atoms_.activeWindow, XCB_ATOM_WINDOW);
    if (active.empty() || active.front() == XCB_WINDOW_NONE) return std::nullopt;
    return processOf(active.front());
  }

  bool raise(pid_t pid) override {
    if (!connected()) return false;
    for (const auto window : words(root_, atoms_.clientList, XCB_ATOM_WINDOW)) {
      if (processOf(window) != pid) continue;
      activate(window);
      return true;
    }
    return false;
  }

 private:
  struct Atoms {
    xcb_atom_t activeWindow = 0;
    xcb_atom_t clientList = 0;
    xcb_atom_t windowPid = 0;
  };

  bool connected() {
    if (xcb_ == nullptr) xcb_ = Xcb::load();
    if (xcb_ == nullptr) return false;
    if (connection_ != nullptr && xcb_->connectionHasError(connection_) == 0) return true;
    disconnect();
    connection_ = xcb_->connect(nullptr, nullptr);
    if (xcb_->connectionHasError(connection_) != 0) {
      disconnect();
      return false;
    }
    root_ = xcb_->rootsIterator(xcb_->getSetup(connection_)).data->root;
    atoms_ = {.activeWindow = atom("_NET_ACTIVE_WINDOW"),
              .clientList = atom("_NET_CLIENT_LIST"),
              .windowPid = atom("_NET_WM_PID")};
    return true;
  }

  void disconnect() {
    if (connection_ != nullptr) xcb_->disconnect(connection_);
    connection_ = nullptr;
  }

  [[nodiscard]] xcb_atom_t atom(std::string_view name) const {
    const auto request = xcb_->internAtom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_->internAtomReply(connection_, request, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  // The 32-bit values of a window's property; empty when the window or the property is not there.
  [[nodiscard]] std::vector<std::uint32_t> words(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const {
    const auto request = xcb_->getProperty(connection_, 0, window, property, type, 0, kWordsAtMost);
    xcb_generic_error_t* error = nullptr;
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_->getPropertyReply(connection_, request, &error), &std::free);
    std::free(error);
    if (!reply || reply->format != 32) return {};
    std::vector<std::uint32_t> values(static_cast<std::size_t>(xcb_->getPropertyValueLength(reply.get())) / 4);
    if (!values.empty()) std::memcpy(values.data(), xcb_->getPropertyValue(reply.get()), values.size() * 4);
    return values;
  }

  [[nodiscard]] std::optional<pid_t> processOf(xcb_window_t window) const {
    const auto pid = words(window, atoms_.windowPid, XCB_ATOM_CARDINAL);
    if (pid.empty()) return std::nullopt;
    return static_cast<pid_t>(pid.front());
  }

  void activate(xcb_window_t window) const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atoms_.activeWindow;
    message.data.data32[0] = kFromPager;
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_->sendEvent(connection_, 0, root_, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                    reinterpret_cast<const char*>(&message));
    xcb_->flush(connection_);
  }

  const Xcb* xcb_ = nullptr;
  xcb_connection_t* connection_ = nullptr;
  xcb_window_t root_ = 0;
  Atoms atoms_;
};

}  // namespace

std::unique_ptr<WindowOrder> makeX11WindowOrder() {
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') return nullptr;
  return std::make_unique<X11WindowOrder>();
}

}  // namespace corvane
