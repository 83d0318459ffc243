#include "platform/dbus/systemd_helper_registration.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>

#include "platform/dbus/bus_call.h"
#include "platform/dbus/bus_connection.h"

namespace corvane {

namespace {

constexpr const char* kService = "org.freedesktop.systemd1";
constexpr const char* kManagerPath = "/org/freedesktop/systemd1";
constexpr const char* kManager = "org.freedesktop.systemd1.Manager";
constexpr const char* kUnit = "org.freedesktop.systemd1.Unit";
constexpr const char* kServiceUnit = "org.freedesktop.systemd1.Service";
constexpr const char* kReplacing = "replace";  // an order takes the place of one that waits

// The manager writes a unit's name into a path with all but letters and digits as _xx.
std::string pathOf(const std::string& unit) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string path = std::string(kManagerPath) + "/unit/";
  for (std::size_t i = 0; i < unit.size(); ++i) {
    const auto byte = static_cast<unsigned char>(unit[i]);
    const bool digit = byte >= '0' && byte <= '9';
    if ((digit && i > 0) || (byte < 0x80 && std::isalpha(byte) != 0))
      path += unit[i];
    else
      (path += '_').append({kDigits[byte >> 4U], kDigits[byte & 15U]});
  }
  return path;
}

BusCall toManager(const char* method) {
  return {.object = {.path = kManagerPath, .interface = kManager}, .method = method};
}

std::string advice(const std::string& unit) {
  return "An administrator has to allow the helper: systemctl unmask " + unit + "; systemctl enable --now " + unit;
}

// What the rest of the system is told of a BusError.
Error registrationError(const Error& error, const std::string& unit) {
  const auto failed = [](int code, std::string text) {
    return Error{.domain = "CRVHelperRegistration", .code = code, .text = std::move(text)};
  };
  switch (error.code) {
    case BusError::forbidden:
      return failed(EACCES, advice(unit));
    case BusError::unknown:
      return failed(ENOENT, "The service manager knows no " + unit + "; install Corvane again");
    case BusError::noAnswer:
      return failed(ETIMEDOUT, "The service manager does not answer");
    case BusError::noBus:
    case BusError::noService:
      return failed(ENOTCONN, "There is no service manager to ask");
    default:
      return failed(EIO, "The service manager refused: " + error.text);
  }
}

// What a failed question after the unit's file means; absent: nothing.
std::optional<UnitFile> unitFileAfter(const Error& error) {
  if (error.code == BusError::unknown || error.code == BusError::refused) return UnitFile::absent;
  return std::nullopt;
}

}  // namespace

UnitFile unitFileOf(std::string_view word) {
  // Some of them are started by something else than their own links, which is as good.
  constexpr std::array<std::string_view, 7> kEnabled{"enabled",  "enabled-runtime", "alias",    "static",
                                                     "indirect", "generated",       "transient"};
  if (std::ranges::find(kEnabled, word) != kEnabled.end()) return UnitFile::enabled;
  if (word == "masked" || word == "masked-runtime") return UnitFile::masked;
  return word == "bad" ? UnitFile::absent : UnitFile::disabled;
}

Heard<UnitFile> askUnitFile(const std::optional<std::string>& systemBus, const std::string& unit,
                            const BusPatience& patience) {
  BusConnection bus(systemBus);
  const BusDeadline deadline(patience);
  const auto owner = bus.ownerOf(kService, deadline);
  if (!owner) return std::unexpected(owner.error());
  const auto word = bus.demand<std::string>({.owner = *owner, .path = kManagerPath, .interface = kManager},
                                            "GetUnitFileState", deadline, unit);
  if (word) return unitFileOf(*word);
  const auto file = unitFileAfter(word.error());
  if (!file) return std::unexpected(Silence::unreadable);
  return *file;
}

template <class Value, class... Arguments>
Result<Value> SystemdHelperRegistration::wait(const char* method, const Arguments&... arguments) {
  BusConnection bus(settings_.systemBus);
  const BusDeadline deadline(settings_.limits.waits);
  const auto gone = failure(BusError::domain, BusError::noService, "There is no service manager");
  if (manager_.isKnown() && !manager_.owner()) return gone;
  const auto owner = manager_.owner() ? Heard<std::string>(*manager_.owner()) : bus.ownerOf(kService, deadline);
  if (!owner && owner.error() == Silence::nobody) return gone;
  if (!owner) return failure(BusError::domain, BusError::noAnswer, "The bus does not answer");
  return bus.demand<Value>({.owner = *owner, .path = kManagerPath, .interface = kManager}, method, deadline,
                           arguments...);
}

template <class... Values, class Done, class... Arguments>
void SystemdHelperRegistration::call(BusCall what, Duration limit, Done done, Arguments... arguments) {
  if (manager_.isKnown() && !manager_.owner()) {
    main_.post(lifeline_.guard([done = std::move(done)]() mutable {
      done(Result<BusAnswer<Values...>>(failure(BusError::domain, BusError::noService, "There is no service manager")));
    }));
    return;
  }
  what.object.owner = manager_.owner().value_or(kService);
  ask<Values...>(system_, std::move(what), limit, lifeline_.guard(std::move(done)), std::move(arguments)...);
}

SystemdHelperRegistration::SystemdHelperRegistration(BusLink& system, MainQueue& main, Settings settings)
    : system_(system),
      main_(main),
      settings_(std::move(settings)),
      unitPath_(pathOf(settings_.unit)),
      file_(settings_.known),
      manager_(system, kService, [this] { managerChanged(); }) {
  const auto from = std::string("type='signal',sender='") + kService + "',";
  const auto ofManager = from + "path='" + kManagerPath + "',interface='" + kManager + "',member='";
  // Of all units: the library matches no argument behind one that is a number.
  signals_.push_back(system_.subscribe(ofManager + "JobRemoved'", [this](sdbus::Message& message) {
    std::uint32_t number = 0;
    sdbus::ObjectPath job;
    std::string unit;
    std::string result;
    message >> number >> job >> unit >> result;
    if (unit == settings_.unit) jobRemoved(job, result);
  }));
  signals_.push_back(system_.subscribe(ofManager + "UnitFilesChanged'", [this](sdbus::Message&) { look(); }));
  signals_.push_back(system_.subscribe(ofManager + "Reloading'", [this](sdbus::Message& message) {
    bool begins = false;
    message >> begins;
    reloads(begins);
  }));
  signals_.push_back(system_.subscribe(
      from + "path='" + unitPath_ + "',interface='" + kProperties + "',member='PropertiesChanged',arg0='" + kUnit + "'",
      [this](sdbus::Message&) { look(); }));
}

SystemdHelperRegistration::~SystemdHelperRegistration() {
  for (auto& done : unregistering_) done.abandon();
}

bool SystemdHelperRegistration::runs() const {
  return activeState_ == "active" || activeState_ == "activating" || activeState_ == "reloading";
}

HelperStatus SystemdHelperRegistration::status() const {
  if (!file_) return HelperStatus::unknown;
  switch (*file_) {
    case UnitFile::absent:
      return HelperStatus::notFound;
    case UnitFile::masked:
      return HelperStatus::requiresApproval;
    case UnitFile::disabled:
      return forbidden_ ? HelperStatus::requiresApproval : HelperStatus::notRegistered;
    case UnitFile::enabled:
      break;
  }
  return forbidden_ && !runs() ? HelperStatus::requiresApproval : HelperStatus::enabled;
}

std::optional<std::int32_t> SystemdHelperRegistration::printExitCode() const {
  if (!activeState_) return std::nullopt;
  return runs() ? 0 : kDaemonNotLoaded;
}

void SystemdHelperRegistration::openSettings() { tell(advice(settings_.unit)); }

Status SystemdHelperRegistration::registerDaemon() {
  if (!unregistering_.empty())
    return failure("CRVHelperRegistration", EBUSY, "The helper's registration is just being taken away");
  if (file_ == UnitFile::masked) return {};
  if (file_ != UnitFile::enabled) {
    const auto enabled = wait<bool>("EnableUnitFiles", std::vector<std::string>{settings_.unit}, false, false);
    if (!enabled && enabled.error().code == BusError::forbidden) {
      // Whoever refused this is there, and has the unit.
      if (!file_) file_ = UnitFile::disabled;
      forbidden_ = true;
      tell(advice(settings_.unit));
      return {};
    }
    if (!enabled) {
      look();
      return std::unexpected(registrationError(enabled.error(), settings_.unit));
    }
    enabledNow(true);
  }
  reload([this] { start(); });
  return {};
}

// Not asked for: what is on its way was true before.
void SystemdHelperRegistration::enabledNow(bool enabled) {
  ++looks_;
  forbidden_ = false;
  file_ = enabled ? UnitFile::enabled : UnitFile::disabled;
}

void SystemdHelperRegistration::reload(Task then) {
  call<>(toManager("Reload"), settings_.limits.reload,
         [this, order = orders_, then = std::move(then)](const auto& answer) mutable {
           // Enabling is in force without it; only what the file says now may be older.
           if (!answer) tell("The service manager did not read the helper's unit anew: " + answer.error().text);
           if (order == orders_) then();
         });
}

void SystemdHelperRegistration::start() {
  call<sdbus::ObjectPath>(
      toManager("StartUnit"), settings_.limits.call,
      [this](const auto& answer) {
        if (answer) return look();
        forbidden_ = forbidden_ || answer.error().code == BusError::forbidden;
        tell("The helper was not started: " + registrationError(answer.error(), settings_.unit).text);
      },
      settings_.unit, std::string(kReplacing));
}

std::optional<std::int32_t> SystemdHelperRegistration::kickstart() {
  if (file_ && *file_ != UnitFile::enabled) return kDaemonNotLoaded;
  const auto job = wait<sdbus::ObjectPath>("StartUnit", settings_.unit, std::string(kReplacing));
  if (job) {
    forbidden_ = false;
    return 0;
  }
  switch (job.error().code) {
    case BusError::noBus:
    case BusError::noService:
    case BusError::noAnswer:
      return std::nullopt;
    case BusError::unknown:
      return kDaemonNotLoaded;
    case BusError::forbidden:
      forbidden_ = true;
      break;
    default:
      break;
  }
  const auto error = registrationError(job.error(), settings_.unit);
  tell(error.text);
  return error.code;
}

void SystemdHelperRegistration::unregisterDaemon(Completion<Status> done) {
  unregistering_.push_back(std::move(done));
  if (unregistering_.size() > 1) return;
  ++orders_;
  // First what is meant for good: a stop that fails leaves a helper that runs, and no start of it that nobody wants.
  call<>(
      toManager("DisableUnitFiles"), settings_.limits.call,
      [this](const auto& answer) {
        const bool gone = !answer && answer.error().code == BusError::unknown;
        if (!answer && !gone)
          return finishUnregister(std::unexpected(registrationError(answer.error(), settings_.unit)));
        if (file_ == UnitFile::enabled) enabledNow(false);
        reload([this] { stop(); });
      },
      std::vector<std::string>{settings_.unit}, false);
}

void SystemdHelperRegistration::stop() {
  call<sdbus::ObjectPath>(
      toManager("StopUnit"), settings_.limits.call,
      [this](const auto& answer) {
        if (!answer && answer.error().code == BusError::unknown) return stopJobEnded("done");
        if (!answer) return finishUnregister(std::unexpected(registrationError(answer.error(), settings_.unit)));
        stopJob_ = std::get<0>(answer->values);
        if (lastJob_.first == *stopJob_) return stopJobEnded(lastJob_.second);
        stopLimit_ = main_.after(settings_.limits.stop, [this] {
          finishUnregister(failure("CRVHelperRegistration", ETIMEDOUT, "the helper does not end"));
        });
      },
      settings_.unit, std::string(kReplacing));
}

void SystemdHelperRegistration::jobRemoved(const std::string& job, const std::string& result) {
  lastJob_ = {job, result};
  if (stopJob_ == job) return stopJobEnded(result);
  if (result == "failed" || result == "timeout" || result == "dependency")
    tellFailure("The service manager's order to the helper ended with \"" + result + "\"");
  look();
}

void SystemdHelperRegistration::stopJobEnded(const std::string& result) {
  if (result != "done" && result != "skipped")
    return finishUnregister(failure("CRVHelperRegistration", EIO, "Stopping the helper ended with \"" + result + "\""));
  ++looks_;
  activeState_ = "inactive";
  finishUnregister({});
}

void SystemdHelperRegistration::finishUnregister(Status status) {
  stopJob_.reset();
  stopLimit_.release();
  look();
  for (auto& done : std::exchange(unregistering_, {})) done(status);
}

void SystemdHelperRegistration::managerChanged() {
  reloading_ = false;
  if (stopJob_) finishUnregister(std::unexpected(registrationError({.code = BusError::noService}, settings_.unit)));
  if (!manager_.owner()) {
    ++looks_;
    lookLater_.release();
    file_.reset();
    activeState_.reset();
    return;
  }
  // The manager signals only while somebody wants it.
  call<>(toManager("Subscribe"), settings_.limits.call, [](const auto&) {});
  look();
}

void SystemdHelperRegistration::reloads(bool begins) {
  reloading_ = begins;
  if (begins)
    lookLater(settings_.limits.reload);
  else
    look();
}

void SystemdHelperRegistration::lookLater(Duration wait) {
  lookLater_ = main_.after(wait, [this] {
    reloading_ = false;
    look();
  });
}

void SystemdHelperRegistration::look() {
  if (reloading_) return;  // it answers nobody; the end of it is told
  lookLater_.release();
  ++looks_;
  call<std::string>(
      toManager("GetUnitFileState"), settings_.limits.call,
      [this, look = looks_](const auto& answer) {
        if (look != looks_ || reloading_) return;
        const auto seen = answer ? unitFileOf(std::get<0>(answer->values)) : unitFileAfter(answer.error());
        if (seen != file_) forbidden_ = false;  // somebody has seen to it
        file_ = seen;
        if (!seen) lookLater(settings_.limits.askAgain);
      },
      settings_.unit);
  call<sdbus::Variant>(
      {.object = {.path = unitPath_, .interface = kProperties}, .method = "Get"}, settings_.limits.call,
      [this, look = looks_](const auto& answer) {
        if (look != looks_ || reloading_) return;
        if (answer && std::get<0>(answer->values).template containsValueOfType<std::string>())
          return sawActiveState(std::get<0>(answer->values).template get<std::string>());
        activeState_.reset();
      },
      std::string(kUnit), std::string("ActiveState"));
}

void SystemdHelperRegistration::sawActiveState(std::string state) {
  const bool failed = state == "failed" && activeState_ != "failed";
  activeState_ = std::move(state);
  if (runs()) forbidden_ = false;
  if (failed) tellFailure("The helper has failed, and is not started again");
}

void SystemdHelperRegistration::tellFailure(std::string what) {
  call<sdbus::Variant>(
      {.object = {.path = unitPath_, .interface = kProperties}, .method = "Get"}, settings_.limits.call,
      [this, what = std::move(what)](const auto& answer) {
        const bool known = answer && std::get<0>(answer->values).template containsValueOfType<std::int32_t>();
        tell(known ? what + "; its exit status is " +
                         std::to_string(std::get<0>(answer->values).template get<std::int32_t>())
                   : what);
      },
      std::string(kServiceUnit), std::string("ExecMainStatus"));
}

void SystemdHelperRegistration::tell(const std::string& line) const {
  if (settings_.log) settings_.log(line);
}

}  // namespace corvane
