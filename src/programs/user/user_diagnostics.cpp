#include "programs/user/user_diagnostics.h"

#include "core/discovery/mac_release.h"
#include "platform/linux/system_version.h"
#include "platform/linux/utmp_console_sessions.h"
#include "programs/user/user_places.h"

namespace corvane {
namespace {

class OwnSession final : public ConsoleSessions {
 public:
  explicit OwnSession(std::string user) : user_(std::move(user)) {}
  [[nodiscard]] std::optional<std::vector<ConsoleSession>> sessions() const override {
    return std::vector<ConsoleSession>{{.user = user_, .loggedInAt = std::nullopt}};
  }

 private:
  std::string user_;
};

std::unique_ptr<ConsoleSessions> consoleOf(const CorvaneConstants& places) {
  if (places.root == "/") return std::make_unique<UtmpConsoleSessions>();
  return std::make_unique<OwnSession>(userShortName());
}

std::filesystem::path temporaryFolder() {
  std::error_code none;
  auto folder = std::filesystem::temp_directory_path(none);
  return none ? "/tmp" : folder;
}

// What the root says it is: a Mac, or else the Linux system this runs on.
std::string operatingSystem(const Files& files, const CorvaneConstants& places) {
  const auto release = macRelease(files, places);
  if (!release) return systemVersion();
  auto text = "Version " + release->version;
  if (release->build) text += " (Build " + *release->build + ")";
  return text;
}

}  // namespace

UserDiagnostics::UserDiagnostics(UserMachine& machine, const Services& services)
    : accounts_(userShortName(), machine.places.home),
      console_(consoleOf(machine.places)),
      children_(machine.loop.loop(), machine.loop.mainQueue()),
      service({.main = machine.loop.mainQueue(),
               .work = machine.work,
               .clock = machine.clock,
               .locale = machine.locale,
               .entropy = machine.entropy,
               .children = children_,
               .accounts = accounts_,
               .console = *console_,
               .bundle = machine.bundle,
               .installation = services.installation,
               .helperState = services.helperState,
               .receipts = services.receipts,
               .log = machine.log,
               .places = machine.places,
               .operatingSystem = operatingSystem(machine.files, machine.places),
               .temporaryFolder = temporaryFolder()}) {}

HomeOf UserDiagnostics::homes() const {
  return [this](std::string_view user) {
    return accounts_.homeOf(user.empty() ? std::string_view(accounts_.userName()) : user);
  };
}

DiagnosticWriter UserDiagnostics::writer() {
  return [this](std::filesystem::path output, Completion<Result<std::filesystem::path>> done) {
    service.generateBundle(std::move(output), std::move(done));
  };
}

}  // namespace corvane
