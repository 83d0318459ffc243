#include "platform/linux/x11_window_order.h"

#include <poll.h>
#include <xcb/xcb.h>

#include <cstdlib>

#include "support/environment_variable.h"
#include "support/started_program.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {

namespace {

constexpr auto kPatience = std::chrono::seconds(30);  // a failing test's, never a passing one's

// A client with windows of its own, which claims to be whatever process it is told.
class Client {
 public:
  Client() : connection_(::xcb_connect(nullptr, nullptr)) {
    if (!works()) return;
    screen_ = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_)).data;
    listen(screen_->root);
  }
  ~Client() { ::xcb_disconnect(connection_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  [[nodiscard]] bool works() const { return ::xcb_connection_has_error(connection_) == 0; }

  xcb_window_t open(std::optional<std::uint32_t> pid) {
    const auto window = ::xcb_generate_id(connection_);
    ::xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root, 0, 0, 80, 60, 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual, 0, nullptr);
    if (pid)
      ::xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1,
                            &*pid);
    ::xcb_map_window(connection_, window);
    ::xcb_flush(connection_);
    return window;
  }
  void close(xcb_window_t window) {
    ::xcb_destroy_window(connection_, window);
    ::xcb_flush(connection_);
  }
  void minimise(xcb_window_t window) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom("WM_CHANGE_STATE");
    message.data.data32[0] = 3;  // iconic
    ::xcb_send_event(connection_, 0, screen_->root,
                     XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                     reinterpret_cast<const char*>(&message));
    ::xcb_flush(connection_);
  }

  // Asks again at each change that the window manager publishes on the root window.
  bool wait(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!done()) {
      if (std::chrono::steady_clock::now() > end || !works()) return false;
      pollfd ready{.fd = ::xcb_get_file_descriptor(connection_), .events = POLLIN, .revents = 0};
      ::poll(&ready, 1, 20);
      while (auto* event = ::xcb_poll_for_event(connection_)) std::free(event);
    }
    return true;
  }

 private:
  void listen(xcb_window_t window) {
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    ::xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &mask);
  }
  xcb_atom_t atom(std::string_view name) {
    const auto request = ::xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    auto* reply = ::xcb_intern_atom_reply(connection_, request, nullptr);
    const auto atom = reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return atom;
  }

  xcb_connection_t* connection_;
  xcb_screen_t* screen_ = nullptr;
};

}  // namespace

struct X11WindowOrderTest : ::testing::Test {
  void SetUp() override {
    if (!isInstalled(kServer) || !isInstalled(kManager)) GTEST_SKIP() << "needs Xvfb and openbox";
    const auto number = firstLineOf([&](int line) {
      server_.emplace(std::vector<std::string>{kServer, "-displayfd", std::to_string(line), "-nolisten", "tcp",
                                               "-screen", "0", "640x480x24"},
                      std::vector<std::string>{"PATH=/usr/bin:/bin"}, line);
    });
    if (number.empty()) GTEST_SKIP() << "the X server does not start here";
    display_.set(":" + number);
  }
  void startManager() {
    manager_.emplace(std::vector<std::string>{kManager, "--sm-disable"},
                     std::vector<std::string>{"PATH=/usr/bin:/bin", "HOME=" + home_.path().string(),
                                              std::string("DISPLAY=") + std::getenv("DISPLAY")});
  }

  static constexpr const char* kServer = "/usr/bin/Xvfb";
  static constexpr const char* kManager = "/usr/bin/openbox";
  TemporaryFolder home_;
  EnvironmentVariable display_{"DISPLAY", std::nullopt};
  std::optional<StartedProgram> server_;
  std::optional<StartedProgram> manager_;
};

TEST_F(X11WindowOrderTest, TheManagersOrderIsReadAndChanged) {
  Client client;
  ASSERT_TRUE(client.works());
  const auto order = makeX11WindowOrder();
  ASSERT_NE(order, nullptr);
  const auto isFront = [&](pid_t pid) { return client.wait([&] { return order->activeProcess() == pid; }); };
  // A manager that is still starting overlooks a window that comes, but never one that is there.
  const auto first = client.open(4001);
  EXPECT_FALSE(order->raise(4001)) << "nobody lists it yet";
  startManager();
  ASSERT_TRUE(client.wait([&] { return order->raise(4001); })) << "once the manager lists it";
  EXPECT_TRUE(isFront(4001));
  client.open(4002);
  ASSERT_TRUE(client.wait([&] { return order->raise(4002); }));
  EXPECT_TRUE(isFront(4002));
  EXPECT_TRUE(order->raise(4001));
  EXPECT_TRUE(isFront(4001));
  EXPECT_FALSE(order->raise(4003));

  client.minimise(first);
  EXPECT_TRUE(client.wait([&] { return order->activeProcess() != 4001; }));
  EXPECT_TRUE(order->raise(4001));
  EXPECT_TRUE(isFront(4001)) << "a minimised window comes back";

  client.close(first);
  EXPECT_TRUE(client.wait([&] { return !order->raise(4001); }));
}

TEST_F(X11WindowOrderTest, WindowsWithoutAProcessAreNobodys) {
  Client client;
  ASSERT_TRUE(client.works());
  const auto order = makeX11WindowOrder();
  client.open(4001);
  startManager();
  ASSERT_TRUE(client.wait([&] { return order->raise(4001); }));
  ASSERT_TRUE(client.wait([&] { return order->activeProcess() == 4001; }));
  const auto nameless = client.open(std::nullopt);
  client.open(0xffffffffU);
  EXPECT_FALSE(order->raise(0));
  client.close(nameless);
  EXPECT_TRUE(order->raise(4001));
}

TEST_F(X11WindowOrderTest, WithoutAManagerOrAServerNothingIsInFront) {
  const auto order = makeX11WindowOrder();
  EXPECT_EQ(order->activeProcess(), std::nullopt) << "no manager";
  EXPECT_FALSE(order->raise(1));
  server_->end();
  EXPECT_EQ(order->activeProcess(), std::nullopt) << "the server went away";
  EXPECT_EQ(order->activeProcess(), std::nullopt) << "and is tried again";
  EXPECT_FALSE(order->raise(1));
  display_.set("no display at all");
  EXPECT_EQ(makeX11WindowOrder()->activeProcess(), std::nullopt);
  display_.set(std::nullopt);
  EXPECT_EQ(makeX11WindowOrder(), nullptr);
}

}  // namespace corvane::testing
