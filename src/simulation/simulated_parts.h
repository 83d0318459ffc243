// The small parts of a simulated Mac: its log, its files and what its user would be told.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/logging/logging_service.h"
#include "core/policies/deferral_install_behavior_resolver.h"
#include "platform/scripted/scripted_files.h"
#include "workflow/neutral_parts.h"
#include "workflow/prompt_presenter.h"

namespace corvane {

// Keeps its lines while it is told to. Main thread.
class SimulatedLog final : public LogSink {
 public:
  bool keeps = true;
  std::vector<std::string> lines;

  void write(LogLevel, std::string_view message) override {
    if (keeps) lines.emplace_back(message);
  }
  [[nodiscard]] std::size_t count(std::string_view text) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(lines, [&](const auto& line) { return line.find(text) != std::string::npos; }));
  }
};

// Files in memory. The heartbeat of a living helper is always of this moment, which costs no turn.
class SimulatedFiles final : public ScriptedFiles {
 public:
  SimulatedFiles(const Clock& clock, std::filesystem::path heartbeat)
      : ScriptedFiles(clock), clock_(clock), heartbeat_(std::move(heartbeat)) {}

  bool helperLives = true;

  [[nodiscard]] bool exists(const std::filesystem::path& path) const override {
    return isHeartbeat(path) ? helperLives : ScriptedFiles::exists(path);
  }
  [[nodiscard]] std::optional<Date> modified(const std::filesystem::path& path) const override {
    if (!isHeartbeat(path)) return ScriptedFiles::modified(path);
    return helperLives ? std::optional(clock_.now()) : std::nullopt;
  }

 private:
  [[nodiscard]] bool isHeartbeat(const std::filesystem::path& path) const {
    return path.native() == heartbeat_.native();
  }

  const Clock& clock_;
  std::filesystem::path heartbeat_;
};

// Shows nothing, and says when what new counts have set off came to its end.
struct SimulatedNotices final : DeferralNotices {
  std::function<void()> delivered;
  void notifyUpdatesAvailable(const UpdatesAvailable&) override {
    if (delivered) delivered();
  }
  void dismissUpdateNotifications(Task done) override {
    if (done) done();
  }
  void notifyDialogTimeoutDeferred(std::int64_t, std::int64_t, bool) override {}
  void notifyDeferralEnded(std::int64_t) override {}
  void scheduleReminders(Date, std::int64_t) override {}
  void cancelReminders() override {}
};

struct SimulatedPanel final : PromptPresenter {
  bool visible = false;
  void showStandaloneWindow() override { visible = true; }
  void hideStandaloneWindow() override { visible = false; }
};

struct NoInstallFacts final : LabelInstallFactsSource {
  [[nodiscard]] LabelInstallFacts installFacts(const Label&) const override { return {}; }
};

}  // namespace corvane
