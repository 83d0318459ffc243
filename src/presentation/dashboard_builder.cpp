#include "presentation/dashboard_builder.h"

#include "presentation/dashboard_parts.h"

namespace corvane {

namespace {

// What runs now; empty when nothing does.
std::string workText(const GateFields& gate, const PageTexts& texts) {
  if (gate.isPatching) {
    return gate.currentOperation == DiscoveryOperation::patchBackground || gate.helperPassOwnsPatchingState
               ? texts.localized("Background patching in progress...")
               : texts.localized("Patching in progress...");
  }
  if (!gate.isLoading) return {};
  return gate.currentOperation == DiscoveryOperation::checkUpdates ? texts.localized("Checking for updates...")
                                                                   : texts.localized("Discovering applications...");
}

PageMessage workLine(const GateFields& gate, const PageTexts& texts) {
  auto text = workText(gate, texts);
  if (text.empty()) return {};
  return {.text = std::move(text), .symbol = "arrow.triangle.2.circlepath", .color = ColorRole::accent};
}

PageMessage message(const MessageFields& messages) {
  if (messages.errorMessage && !messages.errorMessage->empty())
    return {.text = *messages.errorMessage, .symbol = "exclamationmark.triangle.fill", .color = ColorRole::orange};
  return {.text = messages.statusMessage.value_or("")};
}

bool hasSomethingToUpdate(const InventoryFields& inventory) {
  return inventory.pendingUpdates >= 1 || inventory.updatesAwaitingNextCycle >= 1;
}

}  // namespace

DashboardPage makeDashboardPage(const DashboardInputs& inputs) {
  const auto& fields = inputs.fields;
  const PageTexts texts(inputs.title);
  const bool idle = !isBusy(fields);

  DashboardPage page;
  page.title = texts.localized("Status Dashboard");
  page.subtitle = texts.localized("Application update status and patching information");
  page.discover = {.text = texts.localized("Discover Applications"),
                   .help = texts.localized("Scan for installed applications"),
                   .visible = true,
                   .enabled = idle};
  page.check = {.text = texts.localized("Check for Updates"),
                .help = texts.localized("Scan for installed applications and look up their latest versions"),
                .visible = true,
                .enabled = idle};
  page.updateAll = {.text = texts.localized("Update All"),
                    .help = texts.localized("Install all pending updates"),
                    .visible = true,
                    .enabled = idle && hasSomethingToUpdate(fields.inventory)};
  page.workLine = workLine(fields.gate, texts);
  page.statusLine = inputs.statusLine;
  page.statusSymbol = inputs.statusSymbol;
  page.message = message(fields.messages);
  page.cards = makeStatusCards(fields, texts);
  page.timestamps = makeTimestampPills(inputs, texts);
  page.nextStep = makeNextStep(inputs);
  page.filterLabel = texts.localized("Filter:");
  page.filters = makeFilterSegments(fields.filterMode, texts);
  page.recheckAll = {.text = texts.localized("Re-check All Alerts"),
                     .help = texts.localized(
                         "Re-run the latest-version check for every app currently in the Alerts bucket. Useful after a "
                         "transient network or rate-limit issue."),
                     .visible = fields.filterMode == FilterMode::alerts && !inputs.listed.empty(),
                     .enabled = idle};
  page.empty = makeEmptyState(inputs, texts);
  page.helperBanner = makeHelperSetupBanner(inputs, texts);
  page.selfUpdateBanner = makeSelfUpdateBanner(inputs, texts);
  page.rows.reserve(inputs.listed.size());
  for (const auto& app : inputs.listed) page.rows.push_back(makeAppStatusRow(app, inputs, texts));
  return page;
}

}  // namespace corvane
