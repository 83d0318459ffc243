#include "platform/posix/child_helper_registration.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/atomic_file.h"
#include "base/json.h"
#include "platform/posix/process_stamp.h"

namespace corvane {

namespace {

constexpr Duration kStopCheckInterval = 100ms;

}  // namespace

ChildHelperRegistration::ChildHelperRegistration(MainQueue& main, DetachedProgram helper, std::filesystem::path record)
    : main_(main), helper_(std::move(helper)), record_(std::move(record)) {}

ChildHelperRegistration::~ChildHelperRegistration() {
  for (auto& done : waiting_) done.abandon();
}

HelperStatus ChildHelperRegistration::status() const {
  if (::access(helper_.executable.c_str(), X_OK) != 0) return HelperStatus::notFound;
  return ::access(record_.c_str(), F_OK) == 0 ? HelperStatus::enabled : HelperStatus::notRegistered;
}

Status ChildHelperRegistration::registerDaemon() {
  if (runningPid()) return {};
  return startAndRecord();
}

Status ChildHelperRegistration::startAndRecord() {
  const auto pid = startDetached(helper_);
  if (!pid) return std::unexpected(pid.error());
  JsonObject record{{"version", 1}, {"pid", static_cast<std::int64_t>(*pid)}};
  // A helper that has ended already is recorded all the same: registered and not running.
  record.set("stamp", processStamp(*pid).value_or(""));
  std::error_code ignored;  // the write tells what is wrong
  std::filesystem::create_directories(record_.parent_path(), ignored);
  auto written = writeFileAtomically(record_, writeJson(record), 0644);
  // A helper that nobody could find again must not stay behind.
  if (!written) ::kill(*pid, SIGTERM);
  return written;
}

std::optional<ChildHelperRegistration::Record> ChildHelperRegistration::readRecord() const {
  const auto bytes = readFile(record_);
  if (!bytes) return std::nullopt;
  const auto json = parseJson(*bytes);
  if (!json) return std::nullopt;
  const auto* pid = json->find("pid");
  const auto* stamp = json->find("stamp");
  if (pid == nullptr || stamp == nullptr || !pid->integer() || !stamp->string()) return std::nullopt;
  return Record{.pid = static_cast<pid_t>(*pid->integer()), .stamp = std::string(*stamp->string())};
}

std::optional<pid_t> ChildHelperRegistration::runningPid() const {
  const auto record = readRecord();
  if (!record || record->pid <= 1 || processStamp(record->pid) != record->stamp) return std::nullopt;
  return record->pid;
}

std::optional<std::int32_t> ChildHelperRegistration::kickstart() {
  if (status() == HelperStatus::notRegistered || status() == HelperStatus::notFound) return kDaemonNotLoaded;
  if (runningPid()) return 0;
  const auto started = startAndRecord();
  return started ? 0 : started.error().code;
}

std::optional<std::int32_t> ChildHelperRegistration::printExitCode() const {
  return runningPid() ? 0 : kDaemonNotLoaded;
}

void ChildHelperRegistration::unregisterDaemon(Completion<Status> done) {
  waiting_.push_back(std::move(done));
  if (waiting_.size() > 1) return;
  if (const auto pid = runningPid()) ::kill(*pid, SIGTERM);
  checksLeft_ = static_cast<int>(kHelperStopLimit / kStopCheckInterval);
  nextCheck_ = main_.after(Duration::zero(), [this] { checkStopped(); });
}

void ChildHelperRegistration::checkStopped() {
  const auto pid = runningPid();
  if (!pid) return finishUnregister();
  // A forced process is gone after a few checks more, unless the kernel itself holds it.
  if (checksLeft_ == 0) ::kill(*pid, SIGKILL);
  if (checksLeft_-- < -static_cast<int>(1s / kStopCheckInterval)) return finishUnregister();
  nextCheck_ = main_.after(kStopCheckInterval, [this] { checkStopped(); });
}

void ChildHelperRegistration::finishUnregister() {
  Status result;
  if (const auto pid = runningPid())
    result =
        failure("CRVHelperRegistration", ETIMEDOUT, "the helper does not end (process " + std::to_string(*pid) + ")");
  else if (::unlink(record_.c_str()) != 0 && errno != ENOENT)
    result = std::unexpected(fileError("removing", record_, errno));
  for (auto& done : std::exchange(waiting_, {})) done(result);
}

}  // namespace corvane
