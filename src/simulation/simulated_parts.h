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
class SimulatedFiles final : public Files {
 public:
  SimulatedFiles(const Clock& clock, std::filesystem::path heartbeat)
      : clock_(clock), heartbeat_(std::move(heartbeat)), memory_(clock) {}

  bool helperLives = true;
  ScriptedFiles& memory() { return memory_; }

  [[nodiscard]] Result<std::string> read(const std::filesystem::path& path) const override {
    return memory_.read(path);
  }
  [[nodiscard]] Status replace(const std::filesystem::path& path, std::string_view bytes, mode_t mode) override {
    return memory_.replace(path, bytes, mode);
  }
  [[nodiscard]] Status append(const std::filesystem::path& path, std::string_view bytes, mode_t mode) override {
    return memory_.append(path, bytes, mode);
  }
  [[nodiscard]] Status makeFolders(const std::filesystem::path& folder) override { return memory_.makeFolders(folder); }
  [[nodiscard]] Status rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    return memory_.rename(from, to);
  }
  [[nodiscard]] Status remove(const std::filesystem::path& path) override { return memory_.remove(path); }
  [[nodiscard]] bool exists(const std::filesystem::path& path) const override {
    return path == heartbeat_ ? helperLives : memory_.exists(path);
  }
  [[nodiscard]] std::optional<Date> modified(const std::filesystem::path& path) const override {
    if (path != heartbeat_) return memory_.modified(path);
    return helperLives ? std::optional(clock_.now()) : std::nullopt;
  }
  [[nodiscard]] std::optional<std::uint64_t> size(const std::filesystem::path& path) const override {
    return memory_.size(path);
  }

 private:
  const Clock& clock_;
  std::filesystem::path heartbeat_;
  ScriptedFiles memory_;
};

// Tells whoever listens that counts are new.
struct SimulatedSideEffects final : PendingUpdateSideEffects {
  std::function<void()> counted;
  void runPendingUpdateSideEffects() override {
    if (counted) counted();
  }
  void deliverDeferral(bool, bool) override {}
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
