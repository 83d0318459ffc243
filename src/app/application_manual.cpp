#include "app/application_manual.h"

#include "app/command_line.h"
#include "base/manual_page.h"
#include "core/places.h"
#include "core/policies/gui_instance_policy.h"

namespace corvane {
namespace {

// The usage text without the title above it.
std::string options() {
  const auto usage = usageText("Corvane");
  return usage.substr(usage.find("\n\n") + 2);
}

}  // namespace

std::string applicationManual() {
  const CorvaneConstants places{.root = "/", .home = "~"};
  const ManualPage::Entry codes[] = {
      {"0", "The application was quit, another instance runs already, or the job is done."},
      {"1",
       "The job failed, no display takes a window, or the folder in CORVANE_ROOT is not to be trusted; a line on "
       "standard error says which."},
      {"A signal",
       "A job that SIGINT, SIGTERM or SIGHUP interrupts takes away what it had gathered and ends by that signal."}};
  const ManualPage::Entry variables[] = {
      {"CORVANE_ROOT",
       "The system root to work on, an absolute path, instead of /. Its folder must belong to the user, and nobody "
       "else "
       "may write to it."},
      {"HOME", "The user's home, else that of the account."},
      {"DISPLAY, WAYLAND_DISPLAY, QT_QPA_PLATFORM", "Where the windows open. One of them must be set."},
      {"DBUS_SESSION_BUS_ADDRESS, DBUS_SYSTEM_BUS_ADDRESS",
       "Where notifications, focus, power, network and the login manager are asked for."},
      {"XDG_RUNTIME_DIR", "Where it remembers which notifications are shown; the user's support folder without it."},
      {"LC_ALL, LC_MESSAGES, LC_TIME, LANG, TZ", "The language of the texts, the form of dates, and the time zone."},
      {"TMPDIR", "Where a diagnostic bundle is put together, in a folder that nobody else may enter."},
      {std::string(GUIInstancePolicy::agentVariable),
       "Set by the login agent that starts it; it is handed on to no other program."}};
  const ManualPage::Entry files[] = {
      {places.userPreferencesPath(), "The user's settings and the application's state."},
      {places.managedPreferencesPath(), "What a configuration profile sets. It wins over the user's settings."},
      {places.supportFolder(), "Installomator, its labels, the receipts and the state of the root helper."},
      {places.helperSocket(), "Where the root helper is asked."},
      {places.logFile(), "The log that it shares with the root helper."},
      {places.userLogFile(), "Its own log where that one cannot be written."},
      {places.usageSignals(), "Usage signals that wait to be sent."},
      {places.instanceLock(), "Held by the one instance that runs."},
      {places.stateLock(), "Keeps corvanectl from writing while it runs."}};

  ManualPage page("Corvane", 1, "keep the applications on a Mac up to date, in a window",
                  "made from the usage text of Corvane by `make docs`");
  page.heading("SYNOPSIS").paragraph("Corvane [OPTION...] [corvane://show-deferral-prompt]");
  page.heading("DESCRIPTION")
      .paragraph(
          "Opens the dashboard and stays until it is quit. It asks before it installs, lets its user defer within "
          "limits until a deadline, and has the root helper install.")
      .paragraph(
          "One instance runs at a time. A further launch hands over the address that it was given, and ends. The "
          "address corvane://show-deferral-prompt opens the prompt about pending updates.")
      .paragraph("Where the root helper is not running it is started first.");
  page.heading("OPTIONS")
      .paragraph("Options stand anywhere; those that are not known are ignored. -h is --help.")
      .verbatim(options())
      .paragraph("--clear-notifications is not part of this build yet: it says so and ends with 1.")
      .paragraph(
          "The bundle holds logs, crash reports, preferences with the addresses of webhooks blacked out, the helper's "
          "state, receipts and deferral events. A GitHub token in the preferences stays in it, so only its owner may "
          "read the zip. It is given up after 120 seconds.");
  page.heading("EXIT STATUS").entries(codes);
  page.heading("ENVIRONMENT").entries(variables);
  page.heading("FILES").entries(files);
  page.heading("SEE ALSO").paragraph("corvanectl(1), CorvaneRootHelper(8)");
  return page.text();
}

}  // namespace corvane
