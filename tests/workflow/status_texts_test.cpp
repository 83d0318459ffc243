#include "workflow/status_texts.h"

#include "workflow_fixture.h"

namespace corvane {
namespace {

constexpr Date kNow{100h};

StatusFields ready() {
  StatusFields fields;
  fields.helper.helperOperational = true;
  fields.helper.installomatorAvailable = true;
  return fields;
}

TEST(StatusTexts, lineAndSymbolFollowTheFirstConditionThatHolds) {
  struct Row {
    const char* line;
    const char* symbol;
    std::function<void(StatusFields&)> edit;
  };
  const Row rows[] = {
      {"All apps up to date", "checkmark.shield", [](auto&) {}},
      {"1 update available", "arrow.down.circle.fill", [](auto& f) { f.inventory.pendingUpdates = 1; }},
      {"7 updates available", "arrow.down.circle.fill", [](auto& f) { f.inventory.pendingUpdates = 7; }},
      {"Patching is complete for this cycle", "checkmark.shield",
       [](auto& f) {
         f.inventory.cycleCompletionMessage = "done";
         f.inventory.updatesAwaitingNextCycle = 2;
         f.inventory.apps = {unchecked("a")};
       }},
      {"Update check needed", "checkmark.shield",
       [](auto& f) {
         f.inventory.cycleCompletionMessage = "done";
         f.inventory.apps = {unchecked("a")};
       }},
      {"Patching…", "arrow.triangle.2.circlepath",
       [](auto& f) {
         f.gate.isPatching = true;
         f.gate.currentOperation = DiscoveryOperation::patchAll;
         f.blockingPrompt.blockingPromptAppName = "";
       }},
      {"Background patching…", "arrow.triangle.2.circlepath",
       [](auto& f) {
         f.gate.isPatching = true;
         f.gate.currentOperation = DiscoveryOperation::patchBackground;
       }},
      {"Waiting for you to quit Quill…", "arrow.triangle.2.circlepath",
       [](auto& f) {
         f.gate.isPatching = true;
         f.gate.currentOperation = DiscoveryOperation::patchBackground;
         f.blockingPrompt.blockingPromptAppName = "Quill";
       }},
      {"Setup required", "exclamationmark.shield", [](auto& f) { f.helper.helperOperational = false; }},
      {"Starting helper…", "hourglass",
       [](auto& f) {
         f.helper.helperOperational = false;
         f.helper.postLoginHelperGraceDeadline = kNow + 1s;
       }},
      {"Setup required", "exclamationmark.shield",
       [](auto& f) {
         f.helper.helperOperational = false;
         f.helper.postLoginHelperGraceDeadline = kNow;
       }},
      {"Setup required", "exclamationmark.shield",
       [](auto& f) {
         f.helper.installomatorAvailable = false;
         f.helper.postLoginHelperGraceDeadline = kNow + 1s;
       }},
  };
  for (const auto& row : rows) {
    auto fields = ready();
    row.edit(fields);
    EXPECT_EQ(statusLine(fields, kNow), row.line);
    EXPECT_EQ(statusSymbolName(fields, kNow), row.symbol) << row.line;
  }
}

TEST(StatusTexts, backgroundPassesAreWordedByNameAndPlace) {
  const std::tuple<std::optional<std::string>, std::optional<std::string>, std::int64_t, std::int64_t, const char*>
      rows[] = {
          {"Quill", "quill", 0, 0, "Background patching Quill…"},
          {"Quill", "quill", 0, 3, "Background patching Quill (1 of 3)…"},
          {"", "quill", 2, 3, "Background patching quill (3 of 3)…"},
          {std::nullopt, "quill", 9, 3, "Background patching quill (3 of 3)…"},
          {std::nullopt, "quill", -2, 3, "Background patching quill (1 of 3)…"},
          {std::nullopt, std::nullopt, 0, 1, "Background patching 1 app…"},
          {std::nullopt, "", 0, 4, "Background patching 4 apps…"},
          {std::nullopt, std::nullopt, 0, 0, "Background patching in progress…"},
      };
  for (const auto& [name, label, completed, total, text] : rows)
    EXPECT_EQ(backgroundPatchStatusText(name, label, completed, total), text);
}

TEST(StatusTexts, passesAndChecksAreWorded) {
  EXPECT_EQ(startText(DiscoveryOperation::initialLoad, 3), "Loading status and discovering applications...");
  EXPECT_EQ(startText(DiscoveryOperation::patchSingle, 3), "Updating application...");
  EXPECT_EQ(startText(DiscoveryOperation::patchBackground, 3), "Background updating applications…");
  EXPECT_EQ(startText(DiscoveryOperation::checkUpdates, 3),
            "Checking for updates for 3 applications (this may take a few minutes)...");
  EXPECT_EQ(startText(DiscoveryOperation::checkUpdates, 0), "Checking for updates (this may take a few minutes)...");

  InventoryFields inventory{.pendingUpdates = 2, .updatesAwaitingNextCycle = 0, .upToDateCount = 5};
  EXPECT_EQ(checkCompleteText(inventory), "Check for Updates complete: 2 updates available, 5 up to date.");
  inventory = {.updatesAwaitingNextCycle = 1, .upToDateCount = 5, .cycleCompletionMessage = "done"};
  EXPECT_EQ(checkCompleteText(inventory),
            "Check for Updates complete: 1 new update will wait for the next cycle, 5 up to date.");
  inventory.updatesAwaitingNextCycle = 3;
  EXPECT_EQ(checkCompleteText(inventory),
            "Check for Updates complete: 3 new updates will wait for the next cycle, 5 up to date.");
}

}  // namespace
}  // namespace corvane
