#include "helper/run_record.h"

#include <fmt/format.h>
#include <signal.h>

#include <thread>
#include <vector>

#include "base/json.h"
#include "platform/posix/process_stamp.h"

namespace corvane {
namespace {

constexpr int kRecordVersion = 1;
// Nothing tells of the end of a process that is not our child.
constexpr Duration kLook = 20ms;

std::string textOf(const JsonValue& record, std::string_view key) {
  const auto* value = record.find(key);
  return value ? std::string(value->string().value_or("")) : std::string();
}

std::int64_t numberOf(const JsonValue& record, std::string_view key) {
  const auto* value = record.find(key);
  return value ? value->integer().value_or(0) : 0;
}

void signalAll(const std::vector<pid_t>& processes, int signal) {
  for (const auto pid : processes) kill(pid, signal);
}

}  // namespace

RunRecord::RunRecord(std::filesystem::path file, Files& files, const Clock& clock, LogSink& log, Duration toolGrace,
                     std::string_view doing)
    : file_(std::move(file)),
      files_(files),
      clock_(clock),
      log_(log, "RunRecord"),
      toolGrace_(toolGrace),
      doing_(doing) {}

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

bool RunRecord::endLeftTool(pid_t leader, const std::string& stamp) const {
  auto left = processesOfSession(leader, stamp);
  if (left.empty()) return false;
  signalAll(left, SIGTERM);
  for (auto waited = Duration::zero(); waited < toolGrace_ && !left.empty(); waited += kLook) {
    std::this_thread::sleep_for(kLook);
    left = processesOfSession(leader, stamp);
  }
  // What a process started while the others were looked at is found the next time.
  for (int round = 0; round < 3 && !left.empty(); ++round) {
    signalAll(left, SIGKILL);
    std::this_thread::sleep_for(kLook);
    left = processesOfSession(leader, stamp);
  }
  return true;
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
        label.empty() ? std::string() : fmt::format(", while {} was being {}", label, doing_)));
    if (endLeftTool(static_cast<pid_t>(numberOf(*record, "childPid")), textOf(*record, "childStamp")))
      log_.warning(fmt::format("Ended the installer that was left running for {}.", label));
  }
  end();
}

}  // namespace corvane
