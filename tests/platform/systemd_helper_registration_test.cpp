#include "platform/dbus/systemd_helper_registration.h"

#include <cerrno>

#include "support/bus_test.h"
#include "support/helper_registration_contract.h"
#include "support/service_manager.h"

namespace corvane::testing {

namespace {

constexpr const char* kAsksFirst = "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired";
constexpr const char* kDenied = "org.freedesktop.DBus.Error.AccessDenied";

// Waits long for what comes, and briefly for what does not.
constexpr SystemdHelperRegistration::Limits kGenerous{
    .waits = {.call = 30000ms, .answer = 30000ms}, .call = kPatience, .reload = kPatience, .stop = kPatience};

// A system bus with its manager, and what a process has that asks it.
struct System : BusSession {
  std::unique_ptr<ServiceManager> manager = std::make_unique<ServiceManager>(bus_, ServiceManager::Unit{});
  std::vector<std::string> told;

  // As a process of its own has it.
  SystemdHelperRegistration& begin(std::optional<UnitFile> known = std::nullopt,
                                   SystemdHelperRegistration::Limits limits = kGenerous) {
    registration_.reset();
    link_ = std::make_unique<BusLink>(loop_.loop(), loop_.mainQueue(), work_, bus_.address(), kBrisk);
    registration_ = std::make_unique<SystemdHelperRegistration>(
        *link_, loop_.mainQueue(),
        SystemdHelperRegistration::Settings{.systemBus = bus_.address(),
                                            .known = known,
                                            .log = [this](std::string_view line) { told.emplace_back(line); },
                                            .limits = limits});
    return *registration_;
  }
  // What it makes of a unit that is there already.
  SystemdHelperRegistration& beginWith(const ServiceManager::Unit& unit,
                                       SystemdHelperRegistration::Limits limits = kGenerous) {
    manager->becomes(unit);
    auto& registration = begin(std::nullopt, limits);
    EXPECT_TRUE(wait([&] { return registration.status() != HelperStatus::unknown; }));
    EXPECT_TRUE(wait([&] { return registration.printExitCode().has_value(); }));
    return registration;
  }

 private:
  std::unique_ptr<BusLink> link_;
  std::unique_ptr<SystemdHelperRegistration> registration_;
};

class SystemdWorld {
 public:
  HelperRegistration& registration() { return registration_; }
  void install() { system_.manager->becomes({.file = "disabled"}); }
  [[nodiscard]] bool helperRuns() const { return system_.manager->unit().active == "active"; }
  void helperEnds() { system_.manager->becomes({.file = "enabled", .active = "failed", .exitStatus = 9}); }
  [[nodiscard]] int starts() const { return system_.manager->begun(); }
  bool wait(const std::function<bool()>& done) { return system_.wait(done); }

 private:
  System system_;
  HelperRegistration& registration_ = system_.begin();
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Systemd, HelperRegistrationContract, SystemdWorld);

struct SystemdHelperRegistrationTest : SessionTest<System> {
  bool becomes(const HelperRegistration& registration, HelperStatus status) {
    return wait([&] { return registration.status() == status; });
  }
  bool prints(const HelperRegistration& registration, std::optional<std::int32_t> code) {
    return wait([&] { return registration.printExitCode() == code; });
  }
  bool tells(const std::string& part) {
    return wait(
        [&] { return std::ranges::any_of(told, [&](const auto& line) { return line.find(part) != line.npos; }); });
  }
  // 0, or the code of the failure.
  int unregister(HelperRegistration& registration) {
    std::optional<int> code;
    registration.unregisterDaemon([&](const Status& status) { code = codeOf(status); });
    EXPECT_TRUE(wait([&] { return code.has_value(); }));
    return code.value_or(-1);
  }
  static int codeOf(const Status& status) { return status ? 0 : status.error().code; }
};

TEST_F(SystemdHelperRegistrationTest, EachWordOfTheManagerIsAStatus) {
  const struct {
    const char* file;
    HelperStatus status;
  } rows[] = {{"enabled", HelperStatus::enabled},
              {"enabled-runtime", HelperStatus::enabled},
              {"static", HelperStatus::enabled},
              {"disabled", HelperStatus::notRegistered},
              {"linked", HelperStatus::notRegistered},
              {"some new word", HelperStatus::notRegistered},
              {"masked", HelperStatus::requiresApproval},
              {"masked-runtime", HelperStatus::requiresApproval},
              {"bad", HelperStatus::notFound},
              {"", HelperStatus::notFound}};
  const auto& registration = begin();
  EXPECT_EQ(registration.status(), HelperStatus::unknown) << "before anybody has answered";
  EXPECT_EQ(registration.printExitCode(), std::nullopt);
  for (const auto& row : rows) {
    manager->becomes({.file = row.file});
    EXPECT_TRUE(becomes(registration, row.status)) << row.file;
  }
  const auto& informed = begin(UnitFile::disabled);
  EXPECT_EQ(informed.status(), HelperStatus::notRegistered) << "from what was found before";
}

TEST_F(SystemdHelperRegistrationTest, AHelperIsLoadedWhileTheManagerKeepsItRunning) {
  const auto& registration = begin();
  for (const auto* active : {"active", "activating", "failed", "reloading", "deactivating", "active", "inactive"}) {
    manager->becomes({.file = "enabled", .active = active, .exitStatus = 3});
    const bool runs =
        std::string(active) != "failed" && std::string(active) != "inactive" && std::string(active) != "deactivating";
    EXPECT_TRUE(prints(registration, runs ? 0 : kDaemonNotLoaded)) << active;
  }
  EXPECT_TRUE(tells("exit status is 3"));
  EXPECT_EQ(registration.status(), HelperStatus::enabled);
}

TEST_F(SystemdHelperRegistrationTest, OrdersComeInTheirSequence) {
  auto& registration = beginWith({.file = "disabled"});
  ASSERT_TRUE(registration.registerDaemon());
  ASSERT_TRUE(prints(registration, 0));
  EXPECT_EQ(unregister(registration), 0);
  EXPECT_THAT(manager->orders(),
              ElementsAre("EnableUnitFiles", "Reload", "StartUnit", "DisableUnitFiles", "Reload", "StopUnit"));
}

TEST_F(SystemdHelperRegistrationTest, UnregisteringWaitsUntilTheHelperHasGone) {
  auto& registration = beginWith({.file = "enabled", .active = "active"});
  manager->holdJobs();
  std::optional<Status> ended;
  registration.unregisterDaemon([&](Status status) { ended = std::move(status); });
  ASSERT_TRUE(wait([&] { return manager->count("StopUnit") == 1; }));
  loop_.look();
  EXPECT_FALSE(ended);
  EXPECT_EQ(codeOf(registration.registerDaemon()), EBUSY);
  manager->finishJobs();
  ASSERT_TRUE(wait([&] { return ended.has_value(); }));
  EXPECT_TRUE(*ended);
  EXPECT_EQ(manager->count("EnableUnitFiles"), 0);
}

TEST_F(SystemdHelperRegistrationTest, AStartThatIsOvertakenByUnregisteringIsNotGiven) {
  auto& registration = beginWith({.file = "disabled"});
  ASSERT_TRUE(registration.registerDaemon());
  EXPECT_EQ(unregister(registration), 0);
  EXPECT_EQ(manager->count("StartUnit"), 0);
  EXPECT_EQ(manager->unit().active, "inactive");
  EXPECT_EQ(registration.status(), HelperStatus::notRegistered);
}

// Faults.

TEST_F(SystemdHelperRegistrationTest, WhatPolkitRefusesWaitsForTheAdministrator) {
  for (const auto* refusal : {kAsksFirst, kDenied}) {
    manager->refuseAll(refusal);
    told.clear();
    auto& registration = beginWith({.file = "disabled"});
    EXPECT_TRUE(registration.registerDaemon()) << "nothing that an error would help with";
    EXPECT_EQ(registration.status(), HelperStatus::requiresApproval);
    EXPECT_THAT(told, ElementsAre(HasSubstr("systemctl enable --now CorvaneRootHelper.service")));

    manager->becomes({.file = "enabled", .active = "active"});  // the administrator allows it
    EXPECT_TRUE(becomes(registration, HelperStatus::enabled));
    EXPECT_EQ(unregister(registration), EACCES);
    EXPECT_EQ(registration.status(), HelperStatus::enabled) << "nothing has changed";
    EXPECT_THAT(manager->orders(), Not(Contains("StopUnit")));

    manager->becomes({.file = "enabled", .active = "failed"});
    ASSERT_TRUE(prints(registration, kDaemonNotLoaded));
    EXPECT_EQ(registration.kickstart(), EACCES);
    EXPECT_EQ(registration.status(), HelperStatus::requiresApproval);
    manager->becomes({.file = "enabled", .active = "active"});
    EXPECT_TRUE(prints(registration, 0));
    manager->becomes({.file = "enabled", .active = "failed"});
    EXPECT_TRUE(prints(registration, kDaemonNotLoaded));
    EXPECT_EQ(registration.status(), HelperStatus::enabled) << "it was allowed once, and is asked for again";
  }
}

TEST_F(SystemdHelperRegistrationTest, AMaskedUnitIsLeftToTheAdministrator) {
  auto& registration = beginWith({.file = "masked"});
  EXPECT_TRUE(registration.registerDaemon());
  EXPECT_EQ(registration.kickstart(), kDaemonNotLoaded);
  EXPECT_THAT(manager->orders(), IsEmpty());
  // One that was masked without a word.
  auto& late = begin(UnitFile::disabled);
  const auto refused = late.registerDaemon();
  EXPECT_EQ(codeOf(refused), EIO);
  EXPECT_THAT(refused.error().text, HasSubstr("Unit is masked"));
  EXPECT_TRUE(becomes(late, HelperStatus::requiresApproval));
}

TEST_F(SystemdHelperRegistrationTest, AHelperThatDoesNotStartIsTold) {
  auto& registration = beginWith({.file = "disabled"});
  manager->jobsEnd("failed", {.file = "enabled", .active = "failed", .exitStatus = 203});
  ASSERT_TRUE(registration.registerDaemon());
  EXPECT_TRUE(tells("ended with \"failed\"; its exit status is 203"));
  EXPECT_TRUE(prints(registration, kDaemonNotLoaded));
  EXPECT_EQ(registration.status(), HelperStatus::enabled);

  manager->refuse("StartUnit", "org.freedesktop.systemd1.BadUnitSetting");
  EXPECT_EQ(registration.kickstart(), EIO);
  ASSERT_TRUE(registration.registerDaemon());
  EXPECT_TRUE(tells("The helper was not started: The service manager refused"));
}

TEST_F(SystemdHelperRegistrationTest, AHelperThatDoesNotStopFailsTheUnregistering) {
  auto& registration = beginWith({.file = "enabled", .active = "active"});
  manager->jobsEnd("canceled", {.file = "disabled", .active = "active"});
  EXPECT_EQ(unregister(registration), EIO);
  manager->refuse("StopUnit", "org.freedesktop.DBus.Error.LimitsExceeded");
  EXPECT_EQ(unregister(registration), EIO);
  manager->refuse("StopUnit", "");
  manager->holdJobs();
  auto limits = kGenerous;
  limits.stop = 20ms;
  auto& impatient = beginWith({.file = "enabled", .active = "active"}, limits);
  EXPECT_EQ(unregister(impatient), ETIMEDOUT);
}

TEST_F(SystemdHelperRegistrationTest, AManagerThatHangsCostsItsLimitOnlyAndIsAskedAgain) {
  auto limits = kGenerous;
  limits.waits = {.call = 20ms, .answer = 30ms};
  limits.call = 20ms;
  limits.askAgain = 20ms;
  manager->becomes({.file = "disabled"});
  manager->hang(true);
  auto& registration = begin(std::nullopt, limits);
  ASSERT_TRUE(wait([&] { return manager->count("Subscribe") == 1; }));
  EXPECT_EQ(registration.status(), HelperStatus::unknown);
  EXPECT_EQ(codeOf(registration.registerDaemon()), ETIMEDOUT);
  EXPECT_EQ(registration.kickstart(), std::nullopt);
  EXPECT_EQ(unregister(registration), ETIMEDOUT);
  EXPECT_EQ(registration.status(), HelperStatus::unknown);
  const auto asked = askUnitFile(bus_.address(), kHelperUnit, limits.waits);
  EXPECT_EQ(asked.error(), Silence::unreadable);
  manager->hang(false);
  EXPECT_TRUE(wait([&] { return registration.status() != HelperStatus::unknown; }));
}

TEST_F(SystemdHelperRegistrationTest, AManagerThatReadsItsUnitsAnewIsNotTakenForOneThatHangs) {
  auto limits = kGenerous;
  limits.call = 500ms;
  limits.askAgain = 20ms;
  manager->becomes({.file = "disabled"});
  auto& registration = begin(UnitFile::disabled, limits);
  ASSERT_TRUE(prints(registration, kDaemonNotLoaded));
  manager->hang(true, "Reload");
  ASSERT_TRUE(registration.registerDaemon());
  ASSERT_TRUE(wait([&] { return manager->count("Reload") == 1; }));
  // Whatever was asked before has had its time when this has.
  EXPECT_EQ(unregister(registration), ETIMEDOUT);
  EXPECT_EQ(registration.status(), HelperStatus::enabled);
  manager->hang(false);
  EXPECT_TRUE(becomes(registration, HelperStatus::notRegistered)) << "what it was asked it does, late";
}

TEST_F(SystemdHelperRegistrationTest, AManagerThatVanishesEndsWhatWaitsForItAndIsFoundAgain) {
  auto& registration = beginWith({.file = "enabled", .active = "active"});
  manager->holdJobs();
  std::optional<int> code;
  registration.unregisterDaemon([&](const Status& status) { code = codeOf(status); });
  ASSERT_TRUE(wait([&] { return manager->count("StopUnit") == 1; }));
  manager.reset();
  ASSERT_TRUE(wait([&] { return code.has_value(); }));
  EXPECT_THAT(*code, ::testing::AnyOf(ENOTCONN, ETIMEDOUT));
  ASSERT_TRUE(becomes(registration, HelperStatus::unknown));
  EXPECT_EQ(registration.printExitCode(), std::nullopt);
  EXPECT_EQ(codeOf(registration.registerDaemon()), ENOTCONN);
  EXPECT_EQ(registration.kickstart(), std::nullopt);
  EXPECT_EQ(unregister(registration), ENOTCONN);
  EXPECT_EQ(askUnitFile(bus_.address(), kHelperUnit).error(), Silence::nobody);

  manager = std::make_unique<ServiceManager>(bus_, ServiceManager::Unit{.file = "disabled"});
  ASSERT_TRUE(becomes(registration, HelperStatus::notRegistered));
  EXPECT_EQ(askUnitFile(bus_.address(), kHelperUnit), UnitFile::disabled);
  ASSERT_TRUE(registration.registerDaemon());
  EXPECT_TRUE(prints(registration, 0)) << "its signals are heard again";
  EXPECT_EQ(askUnitFile(std::nullopt, kHelperUnit).error(), Silence::nobody);
}

}  // namespace corvane::testing
