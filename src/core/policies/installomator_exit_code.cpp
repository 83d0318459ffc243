#include "core/policies/installomator_exit_code.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "base/localized.h"

namespace corvane {

namespace {

struct Row {
  std::int64_t code;
  std::string_view shortName;
  std::string_view description;
};

constexpr auto kRows = std::to_array<Row>({
    {InstallomatorExitCode::kNotVerified, toLocalize("Not verified"),
     toLocalize(
         "The installer ended without an error, but the installed version could not be read afterwards. The next check "
         "tells "
         "whether it is up to date; see the log for the reason.")},
    {InstallomatorExitCode::kVersionUnchanged, toLocalize("Version unchanged"),
     toLocalize(
         "The installer ended without an error, but the old version is still installed. Quit the application and try "
         "again; if it stays, ask your administrator to install it by hand.")},
    {0, toLocalize("Installed"), toLocalize("The update was installed, or the latest version was already there.")},
    {1, toLocalize("Label not usable"),
     toLocalize("The label is unknown or incomplete. Ask your administrator to update the label catalogue.")},
    {2, toLocalize("Download failed"),
     toLocalize("The installer could not be downloaded, or the server answered with a page instead of a file. Check "
                "the network "
                "and any proxy, then try again.")},
    {3, toLocalize("Disk image damaged"),
     toLocalize("The downloaded disk image could not be opened, often because the download is incomplete. Try again.")},
    {4, toLocalize("Not trusted by macOS"),
     toLocalize("macOS refused the downloaded application or package, often because the download is damaged. Try "
                "again; if it is "
                "refused again, do not install it by hand.")},
    {5, toLocalize("Signature mismatch"),
     toLocalize("The download is signed by another developer than the label expects, so it was not installed. Ask your "
                "administrator to check the vendor and the label.")},
    {6, toLocalize("Not run as root"),
     toLocalize("The installer was not started with root rights. Reset the helper in the settings.")},
    {7, toLocalize("Copy failed"),
     toLocalize("The new version could not be copied after the old one was removed, so the application may be missing. "
                "Free disk "
                "space if it is full, and update it again now.")},
    {8, toLocalize("Not in the download"),
     toLocalize(
         "The download does not hold the expected application. The vendor has changed it; the label needs an update.")},
    {9, toLocalize("Package failed"),
     toLocalize(
         "The macOS installer reported an error with this package. See the log for its message, then try again.")},
    {10, toLocalize("Declined"), toLocalize("You chose not to quit the application now. It is offered again later.")},
    {11, toLocalize("Still open"),
     toLocalize("The application was still open and would not quit. Quit it and update it again.")},
    {12, toLocalize("Open, skipped"),
     toLocalize("The application was open, so it was left alone. It is updated once it is closed.")},
    {13, toLocalize("No working folder"),
     toLocalize("The temporary folder could not be used. Free disk space, then try again.")},
    {14, toLocalize("No download address"),
     toLocalize(
         "The vendor's release page gave no download address. Try again later; it may limit requests for a while.")},
    {15, toLocalize("Not compatible"),
     toLocalize(
         "The new version needs a newer macOS than this Mac runs. Update macOS, or keep the installed version.")},
    {16, toLocalize("Vendor's installer failed"),
     toLocalize("The vendor's own installer reported an error. See the log for its message, then try again.")},
    {20, toLocalize("No package in image"),
     toLocalize("The downloaded disk image holds no package. The vendor has changed it; the label needs an update.")},
    {21, toLocalize("No package in archive"),
     toLocalize("The downloaded archive holds no package. The vendor has changed it; the label needs an update.")},
    {22, toLocalize("No image in archive"),
     toLocalize("The downloaded archive holds no disk image. The vendor has changed it; the label needs an update.")},
    {23, toLocalize("App Store copy"),
     toLocalize("This copy belongs to the App Store, which updates it. It was left alone.")},
    {24, toLocalize("Screen in use"),
     toLocalize("Another application keeps the screen awake, as in a presentation or a call, so nothing was "
                "interrupted. It is "
                "tried again later.")},
    {25, toLocalize("No answer"),
     toLocalize("The question whether the application may quit was not answered in time. It is asked again later.")},
    {50, toLocalize("Version unreadable"),
     toLocalize("The vendor's version page gave an unexpected answer. Try again later; the label may need an update.")},
    {75, toLocalize("Installer busy"),
     toLocalize("The vendor's own installer is at work already. It is tried again later.")},
    {77, toLocalize("No update tool"),
     toLocalize("The label updates with the vendor's own tool, which was not found or failed. Install the application "
                "again.")},
    {89, toLocalize("Settings missing"),
     toLocalize(
         "The label needs values that are not configured. Ask your administrator to add them to the Installomator "
         "options.")},
    {95, toLocalize("Needs Apple silicon"),
     toLocalize("The new version runs only on Macs with Apple silicon, so it cannot be installed on this one.")},
    {98, toLocalize("macOS too old"),
     toLocalize("The installer does not support the macOS of this Mac. Update macOS.")},
    {99, toLocalize("Label defective"),
     toLocalize("The label names no known kind of download. Ask your administrator to update the catalogue.")},
    {126, toLocalize("Not executable"),
     toLocalize("Installomator could not be started, for its file is not executable. Reset the helper, or install "
                "Installomator "
                "again.")},
    {127, toLocalize("Not found"),
     toLocalize("Installomator, or a tool that it needs, was not found. Install Installomator again.")},
    {130, toLocalize("Interrupted"),
     toLocalize("The installation was interrupted before its end. Update the application again.")},
    {137, toLocalize("Ended by force"),
     toLocalize("The installation took too long or the Mac ran short of memory, and it was ended by force. Update the "
                "application "
                "again.")},
    {143, toLocalize("Timed out"),
     toLocalize("The installation took too long or the Mac was shutting down, and it was ended. Update the "
                "application again.")},
});

// What the same code means when the installer was not downloaded in this run but lay ready.
constexpr auto kStagedRows = std::to_array<Row>({
    {2, toLocalize("Staged file unreadable"),
     toLocalize(
         "The installer that was downloaded ahead could not be read. It is downloaded afresh with the next update.")},
    {3, toLocalize("Staged image damaged"),
     toLocalize("The disk image that was downloaded ahead could not be opened. It is downloaded afresh with the next "
                "update.")},
    {4, toLocalize("Staged file not trusted"),
     toLocalize(
         "macOS refused the installer that was downloaded ahead. It is downloaded afresh with the next update.")},
    {5, toLocalize("Signature mismatch"),
     toLocalize(
         "The installer that was downloaded ahead is signed by another developer than the label expects, so it was not "
         "installed. Ask your administrator to check the vendor and the label.")},
    {8, toLocalize("Not in the staged file"),
     toLocalize(
         "The installer that was downloaded ahead does not hold the expected application. The label needs an update.")},
    {20, toLocalize("No package in staged image"),
     toLocalize("The disk image that was downloaded ahead holds no package. The label needs an update.")},
    {21, toLocalize("No package in staged archive"),
     toLocalize("The archive that was downloaded ahead holds no package. The label needs an update.")},
    {22, toLocalize("No image in staged archive"),
     toLocalize("The archive that was downloaded ahead holds no disk image. The label needs an update.")},
});

const Row* rowOf(std::span<const Row> rows, std::int64_t code) {
  const auto found = std::ranges::find(rows, code, &Row::code);
  return found == rows.end() ? nullptr : &*found;
}

}  // namespace

InstallomatorExitCode::Detail InstallomatorExitCode::detail(std::int64_t code, bool usedStagedInstaller) {
  constexpr std::int64_t kFirstSignal = 128;  // a shell's way to tell of one
  constexpr std::int64_t kLastSignal = kFirstSignal + 64;
  const Row* row = usedStagedInstaller ? rowOf(kStagedRows, code) : nullptr;
  if (row == nullptr) row = rowOf(kRows, code);
  if (row != nullptr) return {.shortName = localized(row->shortName), .description = localized(row->description)};
  if (code > kFirstSignal && code <= kLastSignal) {
    return {.shortName = localized("Ended by signal {}", code - kFirstSignal),
            .description = localized(
                "The installation ended before it was done. Update the application again; if it ends so once more, see "
                "the log.")};
  }
  return {.shortName = localized("Error {}", code),
          .description = localized("The installation failed for a reason that is not known here. See the log.")};
}

}  // namespace corvane
