// What the commands share: the model in hand, waiting, and saying what came of it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/json.h"
#include "ctl/command.h"
#include "ctl/session.h"
#include "workflow/status_view_model.h"

namespace corvane::ctl {

// What a command has in its hands once the model stands.
struct Session {
  const Command& command;
  const World& world;
  const WorkflowServices& services;
  StatusViewModel& model;
};

// What is told in the end, and what the process ends with.
struct Failure {
  Error error;
  ExitCode code = ExitCode::failed;
};

[[nodiscard]] Failure failed(std::string text);
void print(const Session& session, const JsonValue& json, std::string_view text);
ExitCode tell(const Session& session, const Failure& failure);

// What went wrong by the model's own account.
[[nodiscard]] std::optional<Failure> modelFailure(const Session& session);

// Waits until the model rests or `enough` holds, showing what the model says meanwhile.
void waitUntilIdle(const Session& session, const std::function<bool()>& enough = nullptr);

// Starts the helper when it does not run, and asks it once: a heartbeat outlives the helper by a minute, an
// answer does not.
[[nodiscard]] std::optional<Failure> reachHelper(const Session& session);

// The applications concerned, and beside them what the model says last or what went wrong.
ExitCode finish(const Session& session, const Apps& apps, const std::optional<Failure>& failure);

// How a run ended, with the applications of `labels` as they are now. Fails when the run did.
ExitCode tellRun(const Session& session, const PatchEnd& end, const Labels& labels);

[[nodiscard]] Apps appsWithLabels(const Session& session, const Labels& labels);

}  // namespace corvane::ctl
