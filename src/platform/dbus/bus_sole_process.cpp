#include "platform/dbus/bus_sole_process.h"

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/dbus/bus_address.h"
#include "platform/uv/uv_descriptor.h"

namespace corvane {

namespace {

constexpr const char* kBus = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";
constexpr const char* kTake = "Take";
constexpr std::uint32_t kDoNotQueue = 4;
constexpr std::uint32_t kOwnerNow = 1;
constexpr std::uint32_t kOwnerAlready = 4;
constexpr int kMessagesATurn = 64;

// Nobody has the name, or whoever had it went before an answer.
constexpr std::array<std::string_view, 3> kNobody{"org.freedesktop.DBus.Error.ServiceUnknown",
                                                  "org.freedesktop.DBus.Error.NameHasNoOwner",
                                                  "org.freedesktop.DBus.Error.NoReply"};

std::string pathOf(std::string name) {
  std::ranges::replace(name, '.', '/');
  return "/" + name;
}

std::unexpected<Error> noSession(std::string_view why) {
  return failure(SoleProcessError::domain, SoleProcessError::noSession, std::string(why));
}

std::uint64_t microseconds(std::chrono::milliseconds limit) {
  return static_cast<std::uint64_t>(std::chrono::microseconds(limit).count());
}

}  // namespace

class BusSoleProcess::Impl {
 public:
  Impl(uv_loop_s* loop, std::optional<std::string> addresses, std::string name, Patience patience)
      : loop_(loop),
        addresses_(std::move(addresses)),
        name_(std::move(name)),
        refusal_(name_ + ".Refused"),
        patience_(patience) {}

  Result<bool> claim() {
    if (const auto open = connect(); !open) return std::unexpected(open.error());
    try {
      // Served before the name is known, or a message could meet nobody.
      if (!object_) serve();
      const auto bus = sdbus::createProxy(*connection_, kBus, kBusPath);
      auto call = bus->createMethodCall(kBus, "RequestName");
      call << name_ << kDoNotQueue;
      auto answer = bus->callMethod(call, microseconds(patience_.bus));
      std::uint32_t outcome = 0;
      answer >> outcome;
      return outcome == kOwnerNow || outcome == kOwnerAlready;
    } catch (const std::exception& problem) {
      leave();
      return noSession(problem.what());
    }
  }

  Status handOver(const std::string& message) {
    if (const auto open = connect(); !open) return open;
    try {
      const auto other = sdbus::createProxy(*connection_, name_, pathOf(name_));
      auto call = other->createMethodCall(name_, kTake);
      call << message;
      other->callMethod(call, microseconds(patience_.other));
      return {};
    } catch (const sdbus::Error& error) {
      return failure(SoleProcessError::domain, codeOf(error.getName()), error.getMessage());
    } catch (const std::exception& problem) {
      return noSession(problem.what());
    }
  }

  void listen(std::function<Status(const std::string&)> received, Task lost) {
    received_ = std::move(received);
    lost_ = std::move(lost);
    if (!connection_) return;
    socket_.emplace(loop_, connection_->getEventLoopPollData().fd, [this](DescriptorEvents) { process(); });
    // What came while this process claimed the name is read already; the descriptor will not tell of it.
    socket_->await(DescriptorEvents::both);
  }

  void leave() {
    socket_.reset();
    object_.reset();
    connection_.reset();
  }

 private:
  Status connect() {
    if (connection_) return {};
    if (!addresses_) return noSession("There is no session bus.");
    const auto address = answeringBus(*addresses_, BusDeadline({.call = patience_.bus, .answer = patience_.bus}));
    if (!address)
      return noSession(address.error() == Silence::nobody ? "There is no session bus at its address."
                                                          : "The session bus does not answer.");
    try {
      connection_ = sdbus::createSessionBusConnectionWithAddress(*address);
      return {};
    } catch (const std::exception& problem) {
      return noSession(problem.what());
    }
  }

  void serve() {
    object_ = sdbus::createObject(*connection_, pathOf(name_));
    object_->registerMethod(kTake).onInterface(name_).implementedAs([this](const std::string& message) {
      const auto taken = received_ ? received_(message) : Status();
      if (!taken) throw sdbus::Error(refusal_, taken.error().text);
    });
    object_->finishRegistration();
  }

  [[nodiscard]] int codeOf(const std::string& name) const {
    if (name == refusal_) return SoleProcessError::refused;
    return std::ranges::find(kNobody, name) != kNobody.end() ? SoleProcessError::nobody : SoleProcessError::silent;
  }

  void process() {
    try {
      bool more = true;
      for (int i = 0; more && i < kMessagesATurn; ++i) more = connection_->processPendingRequest();
      // A connection that is closing has nothing to poll for and still something to say.
      more = more || connection_->getEventLoopPollData().getRelativeTimeout() == std::chrono::microseconds::zero();
      const bool writes = (connection_->getEventLoopPollData().events & POLLOUT) != 0;
      socket_->await(more || writes ? DescriptorEvents::both : DescriptorEvents::readable);
    } catch (const std::exception&) {
      leave();
      if (auto lost = std::exchange(lost_, nullptr)) lost();
    }
  }

  uv_loop_s* loop_;
  std::optional<std::string> addresses_;
  std::string name_;
  std::string refusal_;
  Patience patience_;
  std::function<Status(const std::string&)> received_;
  Task lost_;
  std::unique_ptr<sdbus::IConnection> connection_;  // before what leans on it
  std::unique_ptr<sdbus::IObject> object_;
  std::optional<UvDescriptor> socket_;
};

BusSoleProcess::BusSoleProcess(uv_loop_s* loop, std::optional<std::string> addresses, std::string name,
                               Patience patience)
    : impl_(std::make_unique<Impl>(loop, std::move(addresses), std::move(name), patience)) {}
BusSoleProcess::~BusSoleProcess() = default;

Result<bool> BusSoleProcess::claim() { return impl_->claim(); }
Status BusSoleProcess::handOver(const std::string& message) { return impl_->handOver(message); }
void BusSoleProcess::listen(std::function<Status(const std::string&)> received, Task lost) {
  impl_->listen(std::move(received), std::move(lost));
}
void BusSoleProcess::leave() { impl_->leave(); }

}  // namespace corvane
