#include "diagnostics/log_view_model.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/localized.h"
#include "core/logging/log_file_catalog.h"
#include "core/logging/log_record_codec.h"

namespace corvane {
namespace {

using Paths = std::vector<std::filesystem::path>;

std::string joined(const Paths& paths, std::string_view between) {
  std::string text;
  for (const auto& path : paths) text.append(text.empty() ? "" : between).append(path.string());
  return text;
}

}  // namespace

LogViewModel::LogViewModel(LogViewServices services)
    : services_(std::move(services)), log_(services_.log, "LogViewModel") {}

LogViewModel::~LogViewModel() {
  for (const auto& out : {load_, filtering_})
    if (out) *out = true;
}

void LogViewModel::refresh() {
  // One load at a time, however often somebody asks: its answer starts the next.
  if (load_) {
    *load_ = true;
    return;
  }
  startLoad();
  changes_.tell();
}

void LogViewModel::startLoad() {
  const auto paths =
      LogFileCatalog::uniqueViewerPaths(services_.currentWritePath(), services_.systemLog, services_.fallbackLog);
  log_.info("Considering log paths: " + joined(paths, ", "));
  load_ = std::make_shared<std::atomic<bool>>(false);
  runThen(
      services_.work, services_.main,
      [paths, &files = services_.files, cancelled = load_] { return load(paths, files, *cancelled); },
      lifeline_.guard([this, paths, cancelled = load_](Loaded loaded) {
        if (cancelled == load_) take(paths, std::move(loaded));
      }));
}

// A file that is renamed or replaced while it is read is read to its end; one that is gone is left out, as is one that
// comes only after it was looked for.
LogViewModel::Loaded LogViewModel::load(const Paths& paths, const Files& files, const std::atomic<bool>& cancelled) {
  Loaded loaded;
  std::vector<LogFileCatalog::File> parsed;
  for (const auto& path : paths) {
    auto text = cancelled ? Result<std::string>("") : files.readEnd(path, kMostBytes);
    loaded.readable.push_back(text.has_value());
    if (text) parsed.push_back({path.string(), LogRecordCodec::parse(*std::move(text))});
  }
  loaded.records = LogFileCatalog::merge(std::move(parsed));
  return loaded;
}

void LogViewModel::take(const Paths& paths, Loaded loaded) {
  if (*std::exchange(load_, nullptr)) {
    startLoad();
    return changes_.tell();
  }
  Paths read;
  for (std::size_t at = 0; at < paths.size(); ++at) {
    if (loaded.readable[at]) read.push_back(paths[at]);
    log_.info((loaded.readable[at] ? "Loaded log file at: " : "Could not read log file at: ") + paths[at].string());
  }
  logs_ = std::make_shared<const LogEntries>(++generation_, std::move(loaded.records));
  canClear_ = !logs_->empty();
  hasLoaded_ = true;
  tellStatus(paths, read);
  filter();
}

void LogViewModel::tellStatus(const Paths& considered, const Paths& read) {
  if (read.empty()) {
    logPath_ = localized("Log files (none present): {}", joined(considered, " | "));
    logPathStatusHelp_ = localized(
        "Looked for the system log and the per-user fallback. Neither file exists yet. Clear never creates or "
        "truncates these files.");
  } else if (read.size() == 1) {
    logPath_ = localized("Log file: {}", read.front().string());
    logPathStatusHelp_ = localized(kNeverModified);
  } else {
    logPath_ = localized("Log files: {}", joined(read, " | "));
    logPathStatusHelp_ = localized(
        "Merged {} on-disk log file(s). Clear only empties the display; files are not modified.", read.size());
  }
}

void LogViewModel::clear() {
  load_ = nullptr;  // what is still being read was asked for before
  logs_ = std::make_shared<const LogEntries>(++generation_, LogRecords());
  canClear_ = false;
  filter();
}

void LogViewModel::setLogLevelFilter(LogLevel level) {
  if (level == level_) return;
  level_ = level;
  filter();
}

void LogViewModel::setSearchText(std::string text) {
  if (text == searchText_) return;
  searchText_ = std::move(text);
  filter();
}

void LogViewModel::filter() {
  const LogFilter wanted{.level = level_, .search = LogSearch(searchText_)};
  if (wanted.passesAll() || logs_->empty()) {
    if (filtering_) *std::exchange(filtering_, nullptr) = true;
    filtered_ = FilteredLogs(logs_);
    filteredBy_ = {};
  } else if (filtered_.entries() != logs_ || filteredBy_ != wanted || filtering_) {
    startFilter();
  }
  changes_.tell();
}

void LogViewModel::startFilter() {
  if (filtering_) *filtering_ = true;
  filtering_ = std::make_shared<std::atomic<bool>>(false);
  const LogFilter wanted{.level = level_, .search = LogSearch(searchText_)};
  const bool narrows = filtered_.entries() == logs_ && wanted.narrows(filteredBy_);
  runThen(
      services_.work, services_.main,
      [within = narrows ? filtered_ : FilteredLogs(logs_), wanted, cancelled = filtering_] {
        return FilteredLogs(within, wanted, *cancelled);
      },
      lifeline_.guard([this, wanted, out = filtering_](FilteredLogs found) {
        if (out != filtering_) return;
        filtering_ = nullptr;
        filtered_ = std::move(found);
        filteredBy_ = wanted;
        changes_.tell();
      }));
}

}  // namespace corvane
