#include "helper/helper_manual.h"

#include <fmt/format.h>

#include "base/manual_page.h"
#include "core/places.h"
#include "helper/heartbeat.h"
#include "helper/helper_options.h"
#include "helper/run_record.h"

namespace corvane {
namespace {

long long seconds(Duration duration) { return std::chrono::duration_cast<std::chrono::seconds>(duration).count(); }

}  // namespace

std::string helperManual() {
  const CorvaneConstants places{.root = "/", .home = "~"};
  const auto help = helperHelp();
  const auto usageEnd = help.find("\n\n");
  const auto usage = help.substr(help.find("CorvaneRootHelper"), usageEnd - help.find("CorvaneRootHelper"));
  const auto stop = fmt::format(
      "Ends in good order: it takes no further request, tells the tool in hand to end and kills it after {} seconds, "
      "and answers whoever waits. What was not installed yet is not begun.",
      seconds(kToolStopGrace));
  const ManualPage::Entry signals[] = {{"SIGTERM, SIGINT", stop}};
  const ManualPage::Entry codes[] = {
      {"0", "It was told to end."},
      {"1",
       "It could not start: another helper serves the same root, or a folder is not root's alone. A line on "
       "standard error says which."},
      {"2", "The command line is wrong."}};
  const ManualPage::Entry files[] = {
      {places.managedPreferencesPath(),
       "Settings of the organisation. For root they count only where nobody else "
       "could change them."},
      {places.userPreferencesPath(), "Settings of the console user."},
      {places.installomatorScript(), "The tool, kept up to date."},
      {places.fragmentsPath(), "Its labels."},
      {places.receipts(), "A line for each finished install."},
      {places.helperState(), "What the application reads of the helper's own work."},
      {places.helperDiscoveredApps(), "The inventory of the last scheduled discovery."},
      {places.helperHeartbeat(), fmt::format("Written every {} seconds while it runs.", seconds(kHeartbeatInterval))},
      {places.stagingFolder(), "Installers that were downloaded ahead."},
      {places.deferralEventsFolder(), "Made for the users, who each keep a file in it."},
      {places.logFile(), "The log."},
      {places.logArchiveFolder(), "Logs that were rotated."},
      {places.helperSocket(), "Its socket; a lock beside it keeps a second helper out."}};

  ManualPage page("CorvaneRootHelper", 8, "install the updates that Corvane decides on",
                  "made from the help of CorvaneRootHelper by `make docs`");
  page.heading("SYNOPSIS").paragraph(usage);
  page.heading("DESCRIPTION")
      .paragraph(
          "Runs Installomator for Corvane and corvanectl, finds latest versions, and by the settings updates closed "
          "applications, looks for applications, downloads installers ahead and keeps Installomator up to date by "
          "itself.")
      .paragraph(
          "The service manager starts it by the unit CorvaneRootHelper.service. Where that unit is not installed, and "
          "on every root other than /, Corvane and corvanectl start it as a daemon of their user.")
      .paragraph("Nothing in its environment counts.");
  page.heading("OPTIONS").verbatim(help.substr(help.find("\n  --") + 1));
  page.heading("WHO MAY ASK")
      .paragraph(
          "Anybody may connect to the socket, and the kernel says who it is. Root, the console user and the account "
          "that it runs as are answered; everybody else is refused.");
  page.heading("SIGNALS").entries(signals);
  page.heading("EXIT STATUS").entries(codes);
  page.heading("FILES").entries(files);
  page.heading("SEE ALSO").paragraph("Corvane(1), corvanectl(1)");
  return page.text();
}

}  // namespace corvane
