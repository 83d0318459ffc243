#include "platform/dbus/launcher_entry.h"

#include <mutex>

#include "platform/posix/process_application.h"
#include "support/bus_test.h"

namespace corvane::testing {

namespace {

constexpr const char* kInterface = "com.canonical.Unity.LauncherEntry";

// What a dock would draw: the number, empty for none, and "?" for what is no update of ours.
class Dock {
 public:
  explicit Dock(const PrivateBus& bus) : connection_(sdbus::createSessionBusConnectionWithAddress(bus.address())) {
    connection_->addMatch(
        std::string("type='signal',interface='") + kInterface + "',member='Update'",
        [this](sdbus::Message& message) {
          std::string application;
          std::map<std::string, sdbus::Variant> properties;
          message >> application >> properties;
          const auto count = std::to_string(properties.at("count").get<std::int64_t>());
          const std::scoped_lock lock(mutex_);
          drawn_.push_back(application != "application://org.corvane.Corvane.desktop" ? "?"
                           : properties.at("count-visible").get<bool>()               ? count
                                                                                      : "");
        },
        sdbus::floating_slot);
    connection_->enterEventLoopAsync();
  }
  [[nodiscard]] std::vector<std::string> drawn() const {
    const std::scoped_lock lock(mutex_);
    return drawn_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> drawn_;
  std::unique_ptr<sdbus::IConnection> connection_;
};

}  // namespace

using LauncherEntryTest = BusLinkedTest;

TEST_F(LauncherEntryTest, TheBadgeOfTheApplicationIsDrawnByTheDock) {
  Dock dock(bus_);
  {
    LauncherEntry entry(link_);
    ProcessApplication application([&](const auto& label) { entry.show(label); });
    application.setBadge("7");  // before there is a connection
    ASSERT_TRUE(loop_.wait([&] { return dock.drawn().size() == 1; }));
    for (const auto& label : std::vector<std::optional<std::string>>{"12", "12", "many", std::nullopt, "0", "3"})
      application.setBadge(label);
    ASSERT_TRUE(loop_.wait([&] { return dock.drawn().size() == 5; }));
  }
  ASSERT_TRUE(loop_.wait([&] { return dock.drawn().size() == 6; }));
  EXPECT_THAT(dock.drawn(), ElementsAre("7", "12", "", "0", "3", ""));
}

}  // namespace corvane::testing
