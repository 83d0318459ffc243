// The notifier: shows what the application asks of it for as long as it stands, and ends with the last.
#include <fmt/format.h>

#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/logging/logging_service.h"
#include "notifier/notifier.h"
#include "notifier/notifier_options.h"
#include "notifier/notifier_part.h"
#include "platform/dbus/bus_link.h"
#include "platform/dbus/bus_sole_process.h"
#include "platform/dbus/desktop_notifications.h"
#include "platform/dbus/session_focus_state.h"
#include "platform/linux/linux_locale.h"
#include "platform/posix/detached_process.h"
#include "platform/posix/executable_bundle.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/process_application.h"
#include "platform/posix/process_environment.h"
#include "platform/posix/standard_descriptors.h"
#include "platform/posix/system_clock.h"
#include "platform/uv/uv_main_loop.h"
#include "platform/uv/uv_work_queue.h"
#include "programs/user/user_places.h"

namespace corvane {
namespace {

// Of its own on the bus, and of its memory of what stands on the screen.
constexpr const char* kName = "org.corvane.Corvane.Notification";

// On a desktop nobody reads what a program prints, so the log has it as well.
void complain(std::string_view text) {
  fmt::print(stderr, "Corvane Notification: {}\n", text);
  const auto places = placesFromEnvironment();
  if (!places) return;
  SystemClock clock;
  PosixFiles files;
  const LinuxLocale locale;
  LoggingService log(
      {.system = places->logFile(), .archive = places->logArchiveFolder(), .fallback = places->userLogFile()},
      LogRole::user, files, clock, [&locale] { return locale.calendar(); });
  Logger(log, "CorvaneNotification").error(text);
}

// The one way by which a click reaches the application: a start of its program, which finds the instance that runs.
void openApplication(const Notifier::UserInfo& userInfo) {
  const auto started = startDetached({.executable = ExecutableBundle().path() / "Contents/MacOS/Corvane",
                                      .arguments = applicationArguments(userInfo),
                                      .environment = processEnvironment()});
  if (!started) complain(started.error().text);
}

class Program {
 public:
  int run(const NotifierOptions& options) {
    const auto part = takePart(sole_, options.encodedRequest);
    if (!part) {
      complain(part.error().text);
      return 1;
    }
    if (*part == NotifierPart::handedOver) return 0;
    // Whoever only takes something away is waited for: a notification that is handed over now would keep it running,
    // so it goes back and the next process shows it.
    if (options.request.operation == PersistentNotificationRequest::Operation::post) listen();
    if (const auto handled = notifier_.handle(options.request); !handled) return 1;
    return loop_.run();
  }

 private:
  void listen() {
    sole_.listen(
        [this](const std::string& message) -> Status {
          const auto request = PersistentNotificationRequest::decode(message);
          return request ? notifier_.handle(*request) : Status(std::unexpected(request.error()));
        },
        [this] {
          complain("The desktop session has ended.");
          loop_.quit(1);
        });
  }

  // What was asked of the desktop has gone out when it answers.
  void endUnlessMoreCame() {
    service_.settings([this](const NotificationSettings&) {
      if (!notifier_.hasNothingLeft()) return;
      sole_.leave();
      loop_.quit(code_);
    });
  }

  SystemClock clock_;
  UvMainLoop loop_{clock_, clock_.jumps()};
  UvWorkQueue work_;
  ProcessApplication application_;
  std::optional<std::string> bus_ = BusAddresses::ofEnvironment().session;
  BusSoleProcess sole_{loop_.loop(), bus_, kName};
  BusLink link_{loop_.loop(), loop_.mainQueue(), work_, bus_};
  DesktopNotifications service_{{.session = link_,
                                 .main = loop_.mainQueue(),
                                 .clock = clock_,
                                 .application = application_,
                                 .folder = sessionMemoryFolder(kName),
                                 .stay = true}};
  int code_ = 0;
  Notifier notifier_{{.service = service_, .main = loop_.mainQueue(), .clock = clock_},
                     {.chosen = openApplication,
                      .failed =
                          [this](const Error& error) {
                            complain(error.text);
                            code_ = 1;
                          },
                      .nothingLeft = [this] { endUnlessMoreCame(); }}};
};

}  // namespace
}  // namespace corvane

int main(int count, char** arguments) {
  using namespace corvane;
  fillStandardDescriptors();
  const auto options = NotifierOptions::parse(std::span(arguments + 1, static_cast<std::size_t>(count - 1)));
  if (options) return Program().run(*options);
  if (options.error().code == NotifierOptions::wrongUsage) {
    fmt::print(stderr, "{}\n", options.error().text);
    return 2;
  }
  complain(options.error().text);
  return 1;
}
