#include "ui/log_controller.h"

namespace corvane::ui {

LogController::LogController(LogViewModel& model, const WorkflowServices& services)
    : model_(model),
      services_(services),
      bridge_({.refresh = [this] { model_.refresh(); },
               .clear = [this] { model_.clear(); },
               .setLevel =
                   [this](const std::string& level) {
                     if (const auto known = caseFromRaw<LogEntryLevel>(level)) model_.setLogLevelFilter(*known);
                   },
               .setSearch = [this](const std::string& text) { model_.setSearchText(text); }}) {
  changes_ = model_.observe([this] { show(); });
  show();
}

void LogController::show() {
  const PageTexts texts{AppDisplayTitle(services_.preferences.loadConfiguration())};
  bridge_.setPage(makeLogPage(model_, services_.locale, texts));
  bridge_.setRows(model_.filteredLogs(), services_.locale.calendar());
}

}  // namespace corvane::ui
