// A command over a scripted machine: what is printed, on which stream, and what the process ends with.
#pragma once

#include "ctl/session.h"

#include <deque>

#include "support/set_lock.h"
#include "workflow/workflow_fixture.h"

namespace corvane {

using ctl::ExitCode;
using ctl::Verb;

struct CtlSession : WorkflowTest {
  // An application of ours with an inventory from before, as corvanectl finds it: the model does not act yet.
  void know(const Apps& apps) {
    preferences.writeDiscoveredApps(apps);
    preferences.writePreference("LastDiscoveryDate", time.now() - 24h);
  }

  void answerDiscoveries(std::initializer_list<Result<Apps>> answers) {
    for (const auto& answer : answers) discoveryAnswers_.push_back(answer);
  }

  ExitCode run(ctl::Command command) {
    out.clear();
    err.clear();
    HelperStart helperStart(installation, time.main());
    return ctl::runCommand(
        command, {.services = services,
                  .helperStart = helperStart,
                  .stateLock = lock,
                  .pump = [this](const std::function<bool()>& done, Duration limit) { return pump(done, limit); },
                  .writeBundle =
                      [this](std::string_view output) {
                        bundleOutput = output;
                        return bundle;
                      },
                  .out = [this](std::string_view text) { out += text; },
                  .err = [this](std::string_view text) { err += text; },
                  .progress = onTerminal ? std::function<void(std::string_view)>(
                                               [this](std::string_view text) { progress.emplace_back(text); })
                                         : nullptr});
  }
  ExitCode runJson(Verb verb, Labels labels = {}) {
    return run({.verb = verb, .json = true, .labels = std::move(labels)});
  }

  bool pump(const std::function<bool()>& done, Duration limit) {
    const bool forEver = limit > 1h;
    const auto end = time.steadyNow() + (forEver ? Duration(1h) : limit);
    while (time.steadyNow() < end) {
      time.runUntilIdle();
      if (!helper.discoveries.empty() && !discoveryAnswers_.empty()) {
        helper.answerDiscovery(discoveryAnswers_.front());
        discoveryAnswers_.pop_front();
      } else if (!helper.statuses.empty() && helperAnswers) {
        auto asked = std::move(helper.statuses.front());
        helper.statuses.pop_front();
        asked(StatusInfo{});
      } else if (!helper.runs.empty() && runAnswer) {
        helper.answerRun(*std::exchange(runAnswer, std::nullopt));
      }
      time.runUntilIdle();
      if (done()) return true;
      time.advance(100ms);
    }
    EXPECT_FALSE(forEver) << "the command waits for ever";
    return false;
  }

  [[nodiscard]] JsonValue json() const {
    EXPECT_EQ(std::ranges::count(out, '\n'), 1) << out;
    auto value = parseJson(out);
    EXPECT_TRUE(value) << out;
    return value.value_or(JsonValue());
  }
  [[nodiscard]] JsonValue field(std::string_view key) const {
    const auto object = json();
    const auto* found = object.find(key);
    return found == nullptr ? JsonValue() : *found;
  }
  [[nodiscard]] std::string errorText() const {
    const auto error = field("error");
    const auto* text = error.find("text");
    return text == nullptr ? "<none>" : std::string(text->string().value_or("<no text>"));
  }

  [[nodiscard]] std::vector<std::string> printedLabels() const {
    std::vector<std::string> labels;
    const auto apps = field("apps");
    if (apps.array() == nullptr) return {"<no apps>"};
    for (const auto& app : *apps.array()) labels.emplace_back(*app.find("label")->string());
    return labels;
  }

  SetLock lock;
  bool helperAnswers = true;
  std::optional<Result<PatchRunAnswer>> runAnswer;
  bool onTerminal = false;
  std::string out;
  std::string err;
  std::vector<std::string> progress;
  std::string bundleOutput;
  Result<std::filesystem::path> bundle = "/var/tmp/none.zip";

 private:
  std::deque<Result<Apps>> discoveryAnswers_;
};

}  // namespace corvane
