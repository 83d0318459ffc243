#include "platform/dbus/bus_link.h"

#include <atomic>

#include "platform/dbus/bus_call.h"
#include "platform/dbus/bus_name_watch.h"
#include "support/bus_test.h"

namespace corvane::testing {

namespace {

constexpr const char* kName = "org.example.Abacus";
constexpr const char* kPath = "/org/example/Abacus";
constexpr const char* kInterface = "org.example.Abacus1";

BusCall abacus(const char* method, const std::string& owner = kName) {
  return {.object = {.owner = owner, .path = kPath, .interface = kInterface}, .method = method};
}

}  // namespace

struct BusLinkTest : BusTest {
  [[nodiscard]] std::unique_ptr<BusLink> link(std::optional<std::string> address) {
    return std::make_unique<BusLink>(loop_.loop(), loop_.mainQueue(), work_, std::move(address), kBrisk);
  }
  std::unique_ptr<BusService> serve() {
    auto service = std::make_unique<BusService>(bus_, kName);
    auto& object = service->at(kPath);
    object.registerMethod("Add").onInterface(kInterface).implementedAs([](int a, int b) { return a + b; });
    object.registerMethod("Refuse").onInterface(kInterface).implementedAs([] {
      throw sdbus::Error("org.example.Error.Busy", "come back later");
    });
    object.registerMethod("Ring").onInterface(kInterface).implementedAs([&object](const std::string& word) {
      auto signal = object.createSignal(kInterface, "Rang");
      signal << word;
      object.emitSignal(signal);
    });
    object.registerSignal("Rang").onInterface(kInterface).withParameters<std::string>();
    service->answer();
    return service;
  }
  // The sum, or the code of the failure below zero. `limit` is generous but where it is what is tested.
  int add(BusLink& link, int a, int b, const std::string& owner = kName, Duration limit = kPatience) {
    std::optional<int> sum;
    ask<int>(
        link, abacus("Add", owner), limit,
        [&](const auto& answer) { sum = answer ? std::get<0>(answer->values) : -answer.error().code; }, a, b);
    EXPECT_FALSE(sum) << "an answer in the same turn";
    EXPECT_TRUE(loop_.wait([&] { return sum.has_value(); }));
    return sum.value_or(0);
  }
};

TEST_F(BusLinkTest, CallsAreAnsweredAndFailuresAreTold) {
  const auto link = this->link(bus_.address());
  EXPECT_EQ(add(*link, 1, 2), -BusError::noService);
  const auto service = serve();
  EXPECT_EQ(add(*link, 40, 2), 42);
  EXPECT_EQ(add(*link, 1, 2, ":1.999"), -BusError::noService);
  EXPECT_EQ(add(*link, 1, 2, "no name at all"), -BusError::unreadable);

  std::vector<int> codes;
  const auto failed = [&](const auto& answer) { codes.push_back(answer ? 0 : answer.error().code); };
  ask<>(*link, abacus("Refuse"), kPatience, failed);
  ask<std::string>(*link, abacus("Add"), kPatience, failed, 1, 2);
  ask<int>(*link, abacus("Add"), kPatience, failed, std::string("one"));
  ask<>(*link, abacus("Ring"), kPatience, failed, std::string("no \xff text"));
  ASSERT_TRUE(loop_.wait([&] { return codes.size() == 4; }));
  EXPECT_THAT(codes, ::testing::UnorderedElementsAre(BusError::refused, BusError::unreadable, BusError::refused,
                                                     BusError::unreadable));
}

TEST_F(BusLinkTest, WithoutABusEveryCallFailsAndNobodyWaits) {
  for (const auto& address : std::vector<std::optional<std::string>>{
           std::nullopt, "", "disabled:", "unix:path=/nowhere/bus", "tcp:host=127.0.0.1"}) {
    const auto lonely = link(address);
    std::vector<bool> told;
    const auto watch = lonely->watch([&](bool connected) { told.push_back(connected); });
    EXPECT_EQ(add(*lonely, 1, 2), -BusError::noBus) << address.value_or("none");
    EXPECT_THAT(told, ElementsAre(false)) << address.value_or("none");
  }
}

TEST_F(BusLinkTest, AServiceOrABusThatHangsCostsItsLimitOnly) {
  const auto link = this->link(bus_.address());
  const BusService silent(bus_, kName);
  EXPECT_EQ(add(*link, 1, 2, kName, 20ms), -BusError::noAnswer);
  bus_.hang();
  EXPECT_EQ(add(*link, 1, 2, kName, 20ms), -BusError::noAnswer) << "the bus";
  const auto late = this->link(bus_.address());
  EXPECT_EQ(add(*late, 1, 2, kName, 20ms), -BusError::noAnswer) << "a bus that never opened";
  bus_.goOn();
}

TEST_F(BusLinkTest, SignalsAreHeardUntilTheLeaseEnds) {
  const auto link = this->link(bus_.address());
  const auto service = serve();
  std::vector<std::string> heard;
  std::vector<int> misread;
  const auto rule = std::string("type='signal',interface='") + kInterface + "'";
  Lease lease = link->subscribe(rule, [&](sdbus::Message& message) {
    std::string word;
    message >> word;
    heard.push_back(word);
    if (word == "last") lease.release();
  });
  const auto wrong = link->subscribe(rule, [&](sdbus::Message& message) {
    int number = 0;
    message >> number;
    misread.push_back(number);
  });
  int rung = 0;
  for (const auto* word : {"first", "last", "after"})
    ask<>(
        *link, abacus("Ring"), kPatience, [&](const auto&) { ++rung; }, std::string(word));
  ASSERT_TRUE(loop_.wait([&] { return rung == 3; }));
  EXPECT_THAT(heard, ElementsAre("first", "last"));
  EXPECT_THAT(misread, ::testing::IsEmpty());

  auto listener = sdbus::createSessionBusConnectionWithAddress(bus_.address());
  std::atomic<int> strokes = 0;
  listener->addMatch(
      "type='signal',interface='org.example.Bell',member='Struck'",
      [&](sdbus::Message& message) {
        int number = 0;
        message >> number;
        strokes += number;
      },
      sdbus::floating_slot);
  listener->enterEventLoopAsync();
  link->emit({.object = {.path = "/org/example/Bell", .interface = "org.example.Bell"}, .method = "Struck"},
             [](sdbus::Message& message) { message << 3; });
  link->emit({.object = {.path = "no path", .interface = "org.example.Bell"}, .method = "Struck"},
             [](sdbus::Message& message) { message << 5; });
  EXPECT_TRUE(loop_.wait([&] { return strokes == 3; }));
}

TEST_F(BusLinkTest, ABusThatWasLostIsFoundAgainWithItsSignalsAndNames) {
  const auto link = this->link(bus_.address());
  std::vector<bool> connected;
  const auto watch = link->watch([&](bool now) { connected.push_back(now); });
  std::vector<std::string> heard;
  const auto lease = link->subscribe("type='signal',member='Rang'", [&](sdbus::Message& message) {
    std::string word;
    message >> word;
    heard.push_back(word);
  });
  BusNameWatch name(*link, kName, [] {});
  EXPECT_FALSE(name.isKnown());
  ASSERT_TRUE(loop_.wait([&] { return name.isKnown(); }));
  EXPECT_FALSE(name.owner());
  auto service = serve();
  ASSERT_TRUE(loop_.wait([&] { return name.owner().has_value(); }));

  auto silent = std::make_unique<BusService>(bus_, "org.example.Silent");
  std::optional<int> code;
  ask<int>(
      *link, abacus("Add", "org.example.Silent"), kPatience * 10,
      [&](const auto& answer) { code = answer ? 0 : answer.error().code; }, 1, 2);
  EXPECT_EQ(add(*link, 1, 1), 2) << "so that the other one has been sent";
  service.reset();
  ASSERT_TRUE(loop_.wait([&] { return !name.owner(); }));
  bus_.end();
  ASSERT_TRUE(loop_.wait([&] { return code && !connected.back(); }));
  EXPECT_THAT(*code, ::testing::AnyOf(BusError::noBus, BusError::noAnswer));
  silent.reset();

  bus_.start();
  ASSERT_TRUE(loop_.wait([&] { return connected.back(); }));
  EXPECT_THAT(connected, ElementsAre(true, false, true));
  service = serve();
  ASSERT_TRUE(loop_.wait([&] { return name.owner().has_value(); }));
  EXPECT_EQ(add(*link, 1, 2, *name.owner()), 3);
  ask<>(
      *link, abacus("Ring"), kPatience, [](const auto&) {}, std::string("again"));
  EXPECT_TRUE(loop_.wait([&] { return !heard.empty(); }));
  service.reset();
  EXPECT_TRUE(loop_.wait([&] { return !name.owner(); }));
}

TEST_F(BusLinkTest, ItDiesInTheMiddleOfAnything) {
  const auto service = serve();
  for (int turns = 0; turns < 12; ++turns) {
    auto link = this->link(bus_.address());
    auto* raw = link.get();
    const auto watch = link->watch([&](bool) {});
    ask<int>(
        *raw, abacus("Add"), kPatience, [&](const auto&) { link.reset(); }, 1, 2);
    ask<int>(
        *raw, abacus("Add"), kPatience, [](const auto&) { ADD_FAILURE() << "answered for the dead"; }, 1, 2);
    for (int i = 0; i < turns && link; ++i) loop_.look();
    link.reset();
  }
  auto link = this->link(bus_.address());
  bool answered = false;
  ask<int>(
      *link, abacus("Add"), kPatience,
      [&](const auto&) {
        link.reset();
        answered = true;
      },
      1, 2);
  EXPECT_TRUE(loop_.wait([&] { return answered; }));
}

}  // namespace corvane::testing
