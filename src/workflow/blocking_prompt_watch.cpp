#include "workflow/blocking_prompt_watch.h"

#include <fmt/format.h>

#include "workflow/status_texts.h"

namespace corvane {

BlockingPromptWatch::BlockingPromptWatch(const RoomContext& context, BlockingPromptFields& fields)
    : c_(context), fields_(fields) {}

void BlockingPromptWatch::startBlockingPromptWatch(std::string appName) {
  stopBlockingPromptWatch();
  appName_ = std::move(appName);
  pidsAtStart_.clear();
  for (const auto& process : osascriptApplications()) pidsAtStart_.insert(process.pid);
  watch_ = c_.services.main.every(kInterval, [this] {
    if (c_.fields.gate.isPatching)
      checkBlockingPrompt();
    else
      watch_.release();
  });
}

void BlockingPromptWatch::stopBlockingPromptWatch() {
  watch_.release();
  setName(std::nullopt);
  lastRaise_.reset();
}

void BlockingPromptWatch::rename(std::string appName) { setName(std::move(appName)); }

void BlockingPromptWatch::checkBlockingPrompt() {
  auto prompts = osascriptApplications();
  std::erase_if(prompts, [&](const RunningProcess& process) { return pidsAtStart_.contains(process.pid); });
  if (prompts.empty()) return setName(std::nullopt);
  const auto& prompt = prompts.front();
  const bool firstSighting = !fields_.blockingPromptAppName;
  const auto name = fields_.blockingPromptAppName && !fields_.blockingPromptAppName->empty()
                        ? *fields_.blockingPromptAppName
                        : appName_;
  setName(name);
  c_.messages.status(waitingForQuitText(name));
  const bool raised = keepInFront(prompt);
  if (firstSighting || (!prompt.active && raised))
    c_.log.info(fmt::format("Waiting for you to quit {}. Installomator's prompt is on screen.", name));
}

bool BlockingPromptWatch::keepInFront(const RunningProcess& prompt) {
  const auto now = c_.services.clock.now();
  if (!prompt.active) {
    if (lastRaise_ && now - *lastRaise_ < kRaiseInterval) return false;
    c_.services.processes.raise(prompt.pid);
  }
  lastRaise_ = now;
  return true;
}

void BlockingPromptWatch::setName(std::optional<std::string> name) {
  fields_.blockingPromptAppName = std::move(name);
  c_.crossings.fieldsChanged();
}

std::vector<RunningProcess> BlockingPromptWatch::osascriptApplications() const {
  auto processes = c_.services.processes.list().value_or(std::vector<RunningProcess>{});
  std::erase_if(processes, [](const RunningProcess& process) { return process.name() != "osascript"; });
  return processes;
}

}  // namespace corvane
