// Where everything lies, under the system root and the user's home. The design calls these the constants.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace corvane {

// Built once a program and handed down. `root` is "/" on a machine and the sample's folder on a sample;
// the machine's own tools and temporary folders are never looked for under it.
struct CorvaneConstants {
  static constexpr std::string_view preferenceDomain = "org.corvane.Corvane";
  static constexpr std::string_view githubRepo = "corvane/corvane";

  std::filesystem::path root = "/";
  std::filesystem::path home;

  [[nodiscard]] std::filesystem::path supportFolder() const { return root / "Library/Application Support/Corvane"; }
  [[nodiscard]] std::filesystem::path installomatorScript() const { return supportFolder() / "Installomator.sh"; }
  [[nodiscard]] std::filesystem::path fragmentsPath() const { return supportFolder() / "fragments"; }
  [[nodiscard]] std::filesystem::path labelsFolder() const { return fragmentsPath() / "labels"; }
  [[nodiscard]] std::filesystem::path receipts() const { return supportFolder() / "receipts.jsonl"; }
  [[nodiscard]] std::filesystem::path helperState() const { return supportFolder() / "helper-state.json"; }
  [[nodiscard]] std::filesystem::path helperDiscoveredApps() const {
    return supportFolder() / "helper-discovered-apps.json";
  }
  [[nodiscard]] std::filesystem::path helperHeartbeat() const { return supportFolder() / "helper-heartbeat"; }
  [[nodiscard]] std::filesystem::path stagingFolder() const { return supportFolder() / "Staging"; }
  [[nodiscard]] std::filesystem::path logArchiveFolder() const { return supportFolder() / "LogArchive"; }
  [[nodiscard]] std::filesystem::path deferralEventsFolder() const { return supportFolder() / "DeferralEvents"; }
  [[nodiscard]] std::filesystem::path logFolder() const { return root / "Library/Logs/Corvane"; }
  [[nodiscard]] std::filesystem::path logFile() const { return logFolder() / "crv.log"; }
  [[nodiscard]] std::filesystem::path helperSocket() const { return root / "var/run/corvane/helper.sock"; }
  [[nodiscard]] std::filesystem::path managedPreferencesPath() const {
    return root / "Library/Managed Preferences" / (std::string(preferenceDomain) + ".plist");
  }
  [[nodiscard]] std::filesystem::path userPreferencesPath() const {
    return home / "Library/Preferences" / (std::string(preferenceDomain) + ".plist");
  }
  [[nodiscard]] std::filesystem::path userLogFile() const { return home / "Library/Logs/Corvane/crv.log"; }
  [[nodiscard]] std::filesystem::path userSupportFolder() const { return home / "Library/Application Support/Corvane"; }
  [[nodiscard]] std::filesystem::path usageSignals() const { return userSupportFolder() / "usage-signals.json"; }
  [[nodiscard]] std::filesystem::path instanceLock() const { return userSupportFolder() / "gui.instance.lock"; }
  // Held by whoever writes the stored state: shared by the application, alone by a corvanectl that writes.
  [[nodiscard]] std::filesystem::path stateLock() const { return userSupportFolder() / "state.lock"; }
};

}  // namespace corvane
