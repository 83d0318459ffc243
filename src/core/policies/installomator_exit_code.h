// What the exit codes of Installomator mean, for counting and for people.
#pragma once

#include <cstdint>
#include <string>

namespace corvane {

// Pure; any thread.
struct InstallomatorExitCode {
  // Our own: the tool ended without an error, but the old version is still installed.
  static constexpr std::int64_t kVersionUnchanged = -1;
  // Our own too: the tool ended without an error, but what is installed now could not be read.
  static constexpr std::int64_t kNotVerified = -2;

  struct Detail {
    std::string shortName;    // the badge of a receipt, two or three words
    std::string description;  // a sentence or two: what happened, and what to do about it
    friend bool operator==(const Detail&, const Detail&) = default;
  };

  // False for what says nothing against the application or its label: success (0), a fault of the helper or
  // the machine (-2, 6, 13), a choice or an absence of the user (10, 25), an application in use (11, 12), a copy
  // of the App Store (23), a display kept awake (24), another installer at work (75). True for all others.
  [[nodiscard]] static constexpr bool countsAsInstallFailure(std::int64_t code) {
    switch (code) {
      case kNotVerified:
      case 0:
      case 6:
      case 10:
      case 11:
      case 12:
      case 13:
      case 23:
      case 24:
      case 25:
      case 75:
        return false;
      default:
        return true;
    }
  }

  // True for what another try of the same version cannot mend: a signer of another team (5), a Mac that is too old
  // for the application (15), has the wrong processor (95) or is too old for the tool (98).
  [[nodiscard]] static constexpr bool isFinalForVersion(std::int64_t code) {
    return code == 5 || code == 15 || code == 95 || code == 98;
  }

  // Localised. Every code has an answer: 129 and above name the signal, unknown ones the code. With a staged
  // installer the texts of download and archive faults speak of the installer that lay ready.
  [[nodiscard]] static Detail detail(std::int64_t code, bool usedStagedInstaller);
};

}  // namespace corvane
