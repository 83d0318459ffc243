// The door between the application and its windows module, which is opened when the first window is needed.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "app/prompt_windows.h"
#include "workflow/status_view_model.h"
#include "workflow/workflow_services.h"

namespace corvane {

class UvMainLoop;
class DeferralPromptController;
struct DeferralPromptPage;
class InstallConfirmationController;
struct SettingsParts;

// What the windows can cause beyond the model's operations. One that is absent is not offered.
struct WindowActions {
  std::function<void()> updateItself;
  std::function<void()> revealLog;
};

// What the module is handed; all of it outlives the windows.
struct WindowsHost {
  StatusViewModel& model;
  const WorkflowServices& services;
  UvMainLoop& loop;
  DeferralPromptController& prompt;
  PromptWindows& promptWindows;
  InstallConfirmationController& confirmation;
  WindowActions actions{};
  // What the settings window is made of, each time it opens; null where there is none to be opened.
  const SettingsParts* settings = nullptr;
  // The user's words for a literal. The module has a text catalogue of its own, which speaks as this does.
  std::function<std::string(std::string_view)> texts{};
  // Where the log is written to now.
  std::function<std::filesystem::path()> logFilePath = [] { return std::filesystem::path(); };
  // Told when a window comes to the front, and when none of ours is there any more.
  std::function<void(bool)> activeChanged = [](bool) {};
};

// Opens the dashboard, runs until the main loop is told to quit or the last window was closed, and gives the
// exit code.
using RunWindows = int (*)(WindowsHost& host);
inline constexpr const char* kRunWindowsSymbol = "corvane_run_windows";

// Draws the dashboard as it stands, without a display, into a PNG file. 0 when the file was written.
using DrawDashboard = int (*)(WindowsHost& host, const std::string& file);
inline constexpr const char* kDrawDashboardSymbol = "corvane_draw_dashboard";

// Draws the prompt's own window, titled `title`, the same way. It needs no host.
using DrawPrompt = int (*)(const DeferralPromptPage& page, const std::string& title, const std::string& file);
inline constexpr const char* kDrawPromptSymbol = "corvane_draw_prompt";

inline constexpr const char* kWindowsModuleFile = "libcorvane_windows.so";

}  // namespace corvane
