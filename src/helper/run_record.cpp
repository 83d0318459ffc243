#include "helper/run_record.h"

#include <fmt/format.h>
#include <signal.h>

#include "base/json.h"
#include "platform/posix/process_stamp.h"

namespace corvane {
namespace {

constexpr int kRecordVersion = 1;

std::string textOf(const JsonValue& record, std::string_view key) {
  const auto* value = record.find(key);
  return value ? std::string(value->string().value_or("")) : std::string();
}

std::int64_t numberOf(const JsonValue& record, std::string_view key) {
  const auto* value = record.find(key);
  return value ? value->integer().value_or(0) : 0;
}

bool endLeftInstaller(const JsonValue& record) {
  const auto pid = static_cast<pid_t>(numberOf(record, "childPid"));
  const auto stamp = textOf(record, "childStamp");
  if (pid <= 1 || stamp.empty() || processStamp(pid) != stamp) return false;
  return kill(-pid, SIGKILL) == 0;
}

}  // namespace

RunRecord::RunRecord(std::filesystem::path file, Files& files, const Clock& clock, LogSink& log)
    : file_(std::move(file)), files_(files), clock_(clock), log_(log, "RunRecord") {}

Status RunRecord::begin(const Labels& labels) {
  labels_ = labels;
  current_ = {};
  done_ = 0;
  child_.reset();
  startedAt_ = clock_.now();
  return write();
}

void RunRecord::working(const Label& label, std::size_t done, std::optional<pid_t> child) {
  current_ = label;
  done_ = done;
  child_ = child;
  if (auto written = write(); !written)
    log_.warning(fmt::format("The run goes on without its record: {}", written.error().text));
}

Status RunRecord::write() const {
  JsonArray labels;
  for (const auto& label : labels_) labels.emplace_back(label.text);
  JsonObject record{{"version", kRecordVersion},
                    {"startedAt", secondsSince2001(startedAt_)},
                    {"labels", std::move(labels)},
                    {"currentLabel", current_.text},
                    {"completedCount", done_}};
  if (child_) {
    record.set("childPid", static_cast<std::int64_t>(*child_));
    record.set("childStamp", processStamp(*child_).value_or(""));
  }
  return files_.replace(file_, writeJson(record), 0644);
}

void RunRecord::end() {
  if (!files_.exists(file_)) return;  // a full disk took none
  if (auto removed = files_.remove(file_); !removed)
    log_.warning(fmt::format("The record of the run stays behind: {}", removed.error().text));
}

void RunRecord::settle() {
  if (!files_.exists(file_)) return;
  const auto text = files_.read(file_);
  const auto record = text ? parseJson(*text) : Result<JsonValue>(std::unexpected(text.error()));
  if (!record) {
    log_.warning(fmt::format("{} is damaged and counts as absent: {}", file_.string(), record.error().text));
  } else {
    const auto* labels = record->find("labels");
    const auto count = labels && labels->array() ? labels->array()->size() : 0;
    const auto label = textOf(*record, "currentLabel");
    log_.warning(fmt::format(
        "The helper ended during a run of {} label(s), {} of them done{}. The next check tells what is installed.",
        count, numberOf(*record, "completedCount"),
        label.empty() ? std::string() : fmt::format(", while {} was being installed", label)));
    if (endLeftInstaller(*record))
      log_.warning(fmt::format("Ended the installer that was left running for {}.", label));
  }
  end();
}

}  // namespace corvane
