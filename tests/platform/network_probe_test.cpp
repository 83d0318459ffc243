#include "platform/dbus/linux_network_probe.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>

#include <atomic>

#include "platform/linux/network_interfaces.h"
#include "platform/net/curl_http_client.h"
#include "platform/scripted/scripted_http_client.h"
#include "platform/scripted/virtual_time.h"
#include "support/bus_test.h"
#include "support/environment_variable.h"
#include "support/web_server.h"

namespace corvane::testing {

namespace {

constexpr const char* kName = "org.freedesktop.NetworkManager";

class Manager {
 public:
  Manager(const PrivateBus& bus, std::uint32_t state, std::uint32_t connectivity) : service_(bus, kName) {
    auto& object = service_.at("/org/freedesktop/NetworkManager");
    object.registerProperty("State").onInterface(kName).withGetter([state] { return state; });
    object.registerProperty("Connectivity").onInterface(kName).withGetter([connectivity] { return connectivity; });
    service_.answer();
  }

 private:
  BusService service_;
};

}  // namespace

struct NetworkProbeTest : BusTest {
  NetworkState probe(const std::optional<std::string>& address) {
    BusLink link(loop_.loop(), loop_.mainQueue(), work_, address);
    LinuxNetworkProbe probe({.system = link,
                             .main = loop_.mainQueue(),
                             .http = client_,
                             .probeURL = [this] { return url_; },
                             .hasLink = [this] { return kernelHasLink_; },
                             .pageLimit = pageLimit_});
    std::optional<NetworkState> state;
    probe.probe([&](const NetworkState& given) { state = given; });
    EXPECT_FALSE(state) << "answered in the same turn";
    EXPECT_TRUE(loop_.wait([&] { return state.has_value(); }));
    return state.value_or(NetworkState{});
  }
  NetworkState probe() { return probe(bus_.address()); }

  EnvironmentVariable noProxy_{"no_proxy", "*"};
  CurlHttpClient client_{loop_.loop(), loop_.mainQueue()};
  WebServer server_;
  std::optional<std::string> url_;
  bool kernelHasLink_ = true;
  Duration pageLimit_ = kPatience;
};

constexpr NetworkState kNone{.hasLink = false, .captivePortal = std::nullopt};
constexpr NetworkState kLink{.hasLink = true, .captivePortal = std::nullopt};
constexpr NetworkState kOpen{.hasLink = true, .captivePortal = false};
constexpr NetworkState kPortal{.hasLink = true, .captivePortal = true};

TEST_F(NetworkProbeTest, WithoutAManagerTheKernelTellsOfTheLink) {
  bus_.makeStartable(kName, "/bin/false");
  for (const auto& address : {std::optional(bus_.address()), std::optional<std::string>()}) {
    kernelHasLink_ = true;
    EXPECT_EQ(probe(address), kLink);
    kernelHasLink_ = false;
    EXPECT_EQ(probe(address), kNone);
  }
  url_ = server_.url("/never");
  EXPECT_EQ(probe(), kNone);
  EXPECT_TRUE(server_.requests().empty()) << "no page without a link";
}

TEST_F(NetworkProbeTest, TheManagersWordCountsWhereThereIsOne) {
  struct Case {
    std::uint32_t state;
    std::uint32_t connectivity;
    NetworkState expected;
    NetworkState withPage;  // that comes from no portal
  };
  url_ = server_.url("/page");
  server_.page("/page", WebServer::answer("204 No Content", ""));
  for (const auto& [state, connectivity, expected, withPage] : {
           Case{.state = 70, .connectivity = 4, .expected = kOpen, .withPage = kOpen},
           Case{.state = 70, .connectivity = 0, .expected = kLink, .withPage = kOpen},
           Case{.state = 60, .connectivity = 3, .expected = kLink, .withPage = kOpen},
           Case{.state = 60, .connectivity = 2, .expected = kPortal, .withPage = kPortal},
           Case{.state = 50, .connectivity = 1, .expected = kNone, .withPage = kNone},
           Case{.state = 20, .connectivity = 1, .expected = kNone, .withPage = kNone},
           Case{.state = 0, .connectivity = 0, .expected = kLink, .withPage = kOpen},
       }) {
    const Manager manager(bus_, state, connectivity);
    url_ = server_.url("/page");
    EXPECT_EQ(probe(), withPage) << state << ' ' << connectivity;
    url_ = "";
    EXPECT_EQ(probe(), expected) << state << ' ' << connectivity;
  }
}

TEST_F(NetworkProbeTest, ThePageTellsOfAPortal) {
  WebServer other;
  const auto elsewhere = other.url("/login", "localhost");
  other.page("/login", WebServer::answer("204 No Content", ""));
  server_.page("/end", WebServer::answer("200 OK", ""));
  struct Case {
    std::string page;
    NetworkState expected;
  };
  for (const auto& [page, expected] : {
           Case{.page = WebServer::answer("204 No Content", ""), .expected = kOpen},
           Case{.page = WebServer::answer("200 OK", ""), .expected = kOpen},
           Case{.page = WebServer::redirect("302 Found", "/end"), .expected = kOpen},
           Case{.page = WebServer::answer("200 OK", "Please log in"), .expected = kPortal},
           Case{.page = WebServer::redirect("302 Found", elsewhere), .expected = kPortal},
           Case{.page = WebServer::answer("511 Network Authentication Required", ""), .expected = kPortal},
           Case{.page = WebServer::answer("403 Forbidden", "blocked by the firewall"), .expected = kLink},
           Case{.page = WebServer::answer("503 Service Unavailable", ""), .expected = kLink},
           Case{.page = "no web server", .expected = kLink},
       }) {
    server_.page("/page", page);
    url_ = server_.url("/page");
    EXPECT_EQ(probe(), expected) << page;
  }
  pageLimit_ = 20ms;
  url_ = server_.url("/silent");
  EXPECT_EQ(probe(), kLink);
  url_ = "file:///etc/hostname";
  EXPECT_EQ(probe(), kLink);
}

// On virtual time: a manager, a page and a bus that never answer.
TEST_F(NetworkProbeTest, ItAnswersWithinItsLimitWhateverHangs) {
  VirtualMachine machine;
  class NeverWork final : public WorkQueue {
    void run(Task job) override { jobs.push_back(std::move(job)); }
    std::vector<Task> jobs;
  } never;
  BusLink hangs(loop_.loop(), machine.main(), never, bus_.address());
  BusLink none(loop_.loop(), machine.main(), never, std::nullopt);
  ScriptedHttpClient slow(machine.main());
  slow.takes = 1h;
  for (auto* link : {&hangs, &none}) {
    LinuxNetworkProbe probe({.system = *link,
                             .main = machine.main(),
                             .http = slow,
                             .probeURL = [] { return "http://page.example/"; },
                             .hasLink = [] { return true; },
                             .pageLimit = 1h});
    std::optional<NetworkState> state;
    probe.probe([&](const NetworkState& given) { state = given; });
    machine.advance(LinuxNetworkProbe::kLimit - 1ms);
    EXPECT_FALSE(state);
    machine.advance(1ms);
    EXPECT_EQ(state, kLink);
    probe.probe([](const NetworkState&) { ADD_FAILURE() << "answered after its end"; });
  }
}

TEST(NetworkInterfacesTest, AnAddressThatOthersCanReachCounts) {
  const auto four = [](const char* text) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    ::inet_pton(AF_INET, text, &address.sin_addr);
    return address;
  };
  const auto six = [](const char* text) {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    ::inet_pton(AF_INET6, text, &address.sin6_addr);
    return address;
  };
  const auto counts = [](const auto& address, unsigned flags = IFF_UP | IFF_RUNNING) {
    return countsAsNetworkLink(flags, reinterpret_cast<const sockaddr*>(&address));
  };
  EXPECT_TRUE(counts(four("192.0.2.7")) && counts(six("2001:db8::7")));
  for (const auto* local : {"169.254.3.4", "0.0.0.0"}) EXPECT_FALSE(counts(four(local))) << local;
  for (const auto* local : {"fe80::1", "::1"}) EXPECT_FALSE(counts(six(local))) << local;
  EXPECT_FALSE(counts(four("192.0.2.7"), IFF_UP)) << "no carrier";
  EXPECT_FALSE(counts(four("192.0.2.7"), IFF_RUNNING));
  EXPECT_FALSE(counts(four("127.0.0.1"), IFF_UP | IFF_RUNNING | IFF_LOOPBACK));
  EXPECT_FALSE(countsAsNetworkLink(IFF_UP | IFF_RUNNING, nullptr));
}

}  // namespace corvane::testing
