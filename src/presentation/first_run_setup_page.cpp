#include "presentation/first_run_setup_page.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "presentation/dashboard_parts.h"
#include "presentation/page_texts.h"

namespace corvane {

namespace {

// From when on a download takes long, and when it takes longer than it should.
constexpr Duration kStillDownloading = 30s;
constexpr Duration kLongerThanUsual = 90s;

StepState helperStepState(const HelperFields& helper, HelperStatus status) {
  if (status == HelperStatus::enabled) return helper.helperOperational ? StepState::complete : StepState::inProgress;
  return status == HelperStatus::requiresApproval ? StepState::inProgress : StepState::pending;
}

PageButton control(std::string text, bool enabled = true, std::string help = {}) {
  return {.text = std::move(text), .help = std::move(help), .visible = true, .enabled = enabled};
}

struct Made {
  StepState state;
  std::string description;
  PageButton control{};
};

Made helperStep(const FirstRunSetupInputs& inputs, const PageTexts& texts) {
  const auto state = helperStepState(inputs.fields.helper, inputs.helperStatus);
  switch (inputs.helperStatus) {
    case HelperStatus::enabled:
      return {state, state == StepState::complete
                         ? texts.localized("Root helper is running.")
                         : texts.localized("Root helper registered. Waiting for it to start…")};
    case HelperStatus::requiresApproval:
      return {
          state,
          texts.localized("Corvane needs approval in System Settings › Login Items & Extensions to install updates as "
                          "root."),
          control(texts.localized("Open Login Items & Extensions"))};
    case HelperStatus::notRegistered:
    case HelperStatus::notFound:
    case HelperStatus::unknown:
      break;
  }
  return {
      state,
      texts.localized("Click Register Helper to install the root LaunchDaemon. macOS will ask you to approve it once."),
      control(texts.localized("Register Helper"))};
}

Made installomatorStep(const FirstRunSetupInputs& inputs, const PageTexts& texts) {
  const auto state = installomatorStepState(inputs.fields.helper, inputs.helperStatus);
  if (state == StepState::complete) return {state, texts.localized("Installomator is deployed and ready.")};
  if (state == StepState::pending)
    return {state, texts.localized("Installomator is deployed automatically once the helper is running.")};
  Made made{.state = state};
  if (inputs.revealsLog)
    made.control = control(
        texts.localized("Reveal Log"), true,
        texts.localized("Open the Corvane log file in Finder. Errors during Installomator download appear here."));
  const auto elapsed = std::max(inputs.now - inputs.step2InProgressSince.value_or(inputs.now), Duration::zero());
  const auto elapsedText = amountText(std::chrono::floor<std::chrono::seconds>(elapsed), inputs.locale);
  if (elapsed < kStillDownloading)
    made.description = localized("Downloading Installomator into /Library/Application Support/Corvane…");
  else if (elapsed < kLongerThanUsual)
    made.description =
        localized("Still downloading Installomator into /Library/Application Support/Corvane… ({})", elapsedText);
  else
    made.description = texts.localized(
        "This is taking longer than usual ({}). The root helper retries the download every 60 seconds. Tap Reveal Log "
        "to see what's happening, or check your network connection.",
        elapsedText);
  return made;
}

Made discoveryStep(const FirstRunSetupInputs& inputs, StepState installomator, const PageTexts& texts) {
  const auto& inventory = inputs.fields.inventory;
  const auto& gate = inputs.fields.gate;
  if (!inventory.apps.empty() && inventory.lastDiscoveryDate) {
    const auto count = inventory.apps.size();
    const auto date = inputs.locale.mediumDateShortTime(*inventory.lastDiscoveryDate);
    return {StepState::complete,
            texts.localized(count == 1 ? toLocalize("Found {} app on {}") : toLocalize("Found {} apps on {}"), count,
                            date)};
  }
  if (gate.isLoading) return {StepState::inProgress, texts.localized("Scanning installed applications…")};
  const bool ready = installomator == StepState::complete;
  return {StepState::pending,
          ready ? texts.localized("Run a one-time scan so Corvane knows what's installed on this Mac.")
                : texts.localized("Available once Installomator is ready."),
          control(texts.localized("Discover Apps"), ready && !isBusy(inputs.fields))};
}

std::string spoken(StepState state, const PageTexts& texts) {
  switch (state) {
    case StepState::complete:
      return texts.localized("Complete");
    case StepState::inProgress:
      return texts.localized("In progress");
    case StepState::pending:
      break;
  }
  return texts.localized("To do");
}

}  // namespace

std::string_view stepStateName(StepState state) {
  switch (state) {
    case StepState::pending:
      return "pending";
    case StepState::inProgress:
      return "inProgress";
    case StepState::complete:
      break;
  }
  return "complete";
}

StepState installomatorStepState(const HelperFields& helper, HelperStatus status) {
  if (helper.installomatorAvailable) return StepState::complete;
  return helperStepState(helper, status) == StepState::complete ? StepState::inProgress : StepState::pending;
}

FirstRunSetupPage makeFirstRunSetupPage(const FirstRunSetupInputs& inputs) {
  if (inputs.fields.helper.firstRunSetupCompleted) return {};
  const PageTexts texts(inputs.title);
  FirstRunSetupPage page{.visible = true,
                         .title = texts.localized("Welcome to Corvane"),
                         .subtitle = texts.localized("Three quick steps to set up automatic patching on this Mac.")};
  bool allComplete = true;
  const auto add = [&](std::string key, std::string title, Made made) {
    allComplete = allComplete && made.state == StepState::complete;
    auto number = fmt::to_string(page.steps.size() + 1);
    auto speech = fmt::format("{}. {}, {}: {}", number, title, spoken(made.state, texts), made.description);
    page.steps.push_back({.key = std::move(key),
                          .number = std::move(number),
                          .title = std::move(title),
                          .state = std::string(stepStateName(made.state)),
                          .spokenText = std::move(speech),
                          .description = std::move(made.description),
                          .control = std::move(made.control)});
  };
  add("helper", texts.localized("Approve the root helper"), helperStep(inputs, texts));
  auto installomator = installomatorStep(inputs, texts);
  const auto ready = installomator.state;
  add("installomator", texts.localized("Wait for Installomator"), std::move(installomator));
  add("discovery", texts.localized("Discover installed apps"), discoveryStep(inputs, ready, texts));
  page.skip = control(texts.localized("Skip Setup"), true,
                      texts.localized("Hide this wizard. You can always run setup actions from the Status dashboard."));
  page.done = control(
      texts.localized("Done"), allComplete,
      allComplete ? texts.localized("Continue to the dashboard.") : texts.localized("Finish all setup steps first."));
  return page;
}

}  // namespace corvane
