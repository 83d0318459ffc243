#include "platform/posix/child_helper_registration.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/atomic_file.h"
#include "base/json.h"
#include "platform/posix/process_stamp.h"
#include "platform/posix/socket_peer.h"

namespace corvane {

namespace {

constexpr Duration kStopCheckInterval = 100ms;

}  // namespace

bool ChildHelperRegistration::Process::runs() const { return pid > 1 && processStamp(pid) == stamp; }

ChildHelperRegistration::ChildHelperRegistration(MainQueue& main, DetachedProgram helper, Paths paths,
                                                 std::function<void(std::string_view)> log, Duration stopLimit)
    : main_(main), helper_(std::move(helper)), paths_(std::move(paths)), log_(std::move(log)), stopLimit_(stopLimit) {}

ChildHelperRegistration::~ChildHelperRegistration() {
  for (auto& done : waiting_) done.abandon();
}

HelperStatus ChildHelperRegistration::status() const {
  if (::access(helper_.executable.c_str(), X_OK) != 0) return HelperStatus::notFound;
  return ::access(paths_.record.c_str(), F_OK) == 0 ? HelperStatus::enabled : HelperStatus::notRegistered;
}

Status ChildHelperRegistration::registerDaemon() { return runAndRecord(); }

Status ChildHelperRegistration::runAndRecord() {
  const auto process = running();
  if (!process) return start();
  return readRecord().damaged ? writeRecord(*process) : Status();
}

Status ChildHelperRegistration::start() {
  const auto pid = startDetached(helper_);
  if (!pid) return std::unexpected(pid.error());
  // A helper that has ended already is recorded all the same: registered and not running.
  auto written = writeRecord({.pid = *pid, .stamp = processStamp(*pid).value_or("")});
  // A helper that nobody could find again must not stay behind.
  if (!written) ::kill(*pid, SIGTERM);
  return written;
}

Status ChildHelperRegistration::writeRecord(const Process& process) {
  const JsonObject record{{"version", 1}, {"pid", static_cast<std::int64_t>(process.pid)}, {"stamp", process.stamp}};
  std::error_code ignored;  // the write tells what is wrong
  std::filesystem::create_directories(paths_.record.parent_path(), ignored);
  return writeFileAtomically(paths_.record, writeJson(record), 0644);
}

ChildHelperRegistration::Record ChildHelperRegistration::readRecord() const {
  const auto bytes = readFile(paths_.record);
  if (!bytes && bytes.error().code == ENOENT) return {};
  const auto json = bytes ? parseJson(*bytes) : std::unexpected(bytes.error());
  const auto* pid = json ? json->find("pid") : nullptr;
  const auto* stamp = json ? json->find("stamp") : nullptr;
  if (pid != nullptr && stamp != nullptr && pid->integer() && stamp->string()) {
    toldDamage_.reset();
    return {.process = Process{.pid = static_cast<pid_t>(*pid->integer()), .stamp = std::string(*stamp->string())}};
  }
  tellDamaged(bytes.value_or(""));
  return {.damaged = true};
}

void ChildHelperRegistration::tellDamaged(const std::string& bytes) const {
  if (toldDamage_ == bytes) return;
  toldDamage_ = bytes;
  if (log_)
    log_("The record of the helper, " + paths_.record.string() + ", is damaged; the helper is looked for at " +
         paths_.socket.string());
}

std::optional<ChildHelperRegistration::Process> ChildHelperRegistration::running() const {
  const auto record = readRecord();
  if (record.process && record.process->runs()) return record.process;
  const auto pid = record.damaged ? listeningProcess(paths_.socket) : std::nullopt;
  const auto stamp = pid ? processStamp(*pid) : std::nullopt;
  if (!stamp) return std::nullopt;
  return Process{.pid = *pid, .stamp = *stamp};
}

std::optional<std::int32_t> ChildHelperRegistration::kickstart() {
  if (status() == HelperStatus::notRegistered || status() == HelperStatus::notFound) return kDaemonNotLoaded;
  const auto runs = runAndRecord();
  return runs ? 0 : runs.error().code;
}

std::optional<std::int32_t> ChildHelperRegistration::printExitCode() const { return running() ? 0 : kDaemonNotLoaded; }

void ChildHelperRegistration::unregisterDaemon(Completion<Status> done) {
  waiting_.push_back(std::move(done));
  if (waiting_.size() > 1) return;
  // Kept, since the way by which the helper was found closes before it has gone.
  ending_ = running();
  if (ending_) ::kill(ending_->pid, SIGTERM);
  checksLeft_ = static_cast<int>(stopLimit_ / kStopCheckInterval);
  nextCheck_ = main_.after(Duration::zero(), [this] { checkStopped(); });
}

void ChildHelperRegistration::checkStopped() {
  if (!ending_ || !ending_->runs()) return finishUnregister();
  // A forced process is gone after a few checks more, unless the kernel itself holds it.
  if (checksLeft_ == 0) ::kill(ending_->pid, SIGKILL);
  if (checksLeft_-- < -static_cast<int>(1s / kStopCheckInterval)) return finishUnregister();
  nextCheck_ = main_.after(kStopCheckInterval, [this] { checkStopped(); });
}

void ChildHelperRegistration::finishUnregister() {
  Status result;
  if (ending_ && ending_->runs())
    result = failure("CRVHelperRegistration", ETIMEDOUT,
                     "the helper does not end (process " + std::to_string(ending_->pid) + ")");
  else if (::unlink(paths_.record.c_str()) != 0 && errno != ENOENT)
    result = std::unexpected(fileError("removing", paths_.record, errno));
  for (auto& done : std::exchange(waiting_, {})) done(result);
}

}  // namespace corvane
