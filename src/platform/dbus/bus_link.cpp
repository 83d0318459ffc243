#include "platform/dbus/bus_link.h"

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <deque>
#include <exception>
#include <limits>
#include <list>
#include <map>
#include <utility>
#include <vector>

#include "base/lifeline.h"
#include "platform/dbus/bus_address.h"
#include "platform/uv/uv_descriptor.h"

namespace corvane {

namespace {

using OpenBus = std::shared_ptr<sdbus::IConnection>;

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();  // ours run on the main queue
constexpr int kMessagesATurn = 64;  // a flood of signals must let others have their turn

Error busError(int code, std::string text) {
  return {.domain = BusError::domain, .code = code, .text = std::move(text)};
}

// What came in, until its turn. A message must not outlive its connection, so it brings it along.
struct Arrival {
  OpenBus bus;
  std::optional<sdbus::MethodReply> reply;
  std::optional<sdbus::PlainMessage> signal;
  std::optional<sdbus::Error> error;
  std::uint64_t to = 0;  // a call's number, or a subscription's
};
using Inbox = std::deque<Arrival>;

// An open bus that has been told what to send us, and where that is put.
struct Opened {
  OpenBus bus;
  std::shared_ptr<Inbox> inbox = std::make_shared<Inbox>();
};

// Off the main thread; may wait.
Result<Opened> open(const std::string& addresses, const std::map<std::uint64_t, std::string>& rules,
                    std::chrono::milliseconds greeting) {
  const auto address = answeringBus(addresses, BusDeadline({.call = greeting, .answer = greeting}));
  if (!address)
    return std::unexpected(busError(
        BusError::noBus, address.error() == Silence::nobody ? "There is no such bus" : "The bus does not answer"));
  try {
    Opened opened{.bus = sdbus::createSessionBusConnectionWithAddress(*address)};
    opened.bus->setMethodCallTimeout(greeting);
    for (const auto& [number, rule] : rules) {
      const auto put = [inbox = opened.inbox, number = number](sdbus::Message& message) {
        inbox->push_back({.signal = static_cast<const sdbus::PlainMessage&>(message), .to = number});
      };
      opened.bus->addMatch(rule, put, sdbus::floating_slot);
    }
    return opened;
  } catch (const std::exception& problem) {
    return std::unexpected(busError(BusError::noBus, problem.what()));
  }
}

DescriptorEvents eventsOf(short events) {
  return static_cast<DescriptorEvents>(((events & POLLIN) != 0 ? 1 : 0) | ((events & POLLOUT) != 0 ? 2 : 0));
}

}  // namespace

class BusLink::Impl {
 public:
  Impl(uv_loop_s* loop, MainQueue& main, WorkQueue& work, std::optional<std::string> addresses, BusHabits habits)
      : loop_(loop),
        main_(main),
        work_(work),
        addresses_(std::move(addresses)),
        habits_(habits),
        delay_(habits.firstRetry) {}
  void call(BusCall what, Duration limit, Write write, Answer answered) {
    const auto number = ++last_;
    auto& call = calls_[number];
    call.what = std::move(what);
    call.write = std::move(write);
    call.answered = std::move(answered);
    call.limit = main_.after(limit, [this, number] {
      finish(number, std::unexpected(busError(BusError::noAnswer, "There was no answer in time")));
    });
    if (bus_)
      send(number);
    else
      wish();
  }

  void emit(const BusCall& what, Write& write) {
    if (!bus_) return;
    try {
      const auto object = sdbus::createObject(*bus_, what.object.path);
      auto signal = object->createSignal(what.object.interface, what.method);
      write(signal);
      object->emitSignal(signal);
    } catch (const std::exception&) {
      return;  // a bus that was lost is noticed by reading
    }
    awaitMore();
  }

  Lease subscribe(std::string rule, Heard heard) {
    assert(!bus_ && "a subscription that nothing is heard of");
    const auto number = ++last_;
    subscriptions_[number] = {.rule = std::move(rule), .heard = std::make_shared<Heard>(std::move(heard))};
    wish();
    return Lease([this, alive = std::weak_ptr(alive_), number] {
      if (!alive.expired()) subscriptions_.erase(number);
    });
  }

  Lease watch(std::function<void(bool)> changed) {
    const auto number = ++last_;
    watchers_[number] = std::make_shared<std::function<void(bool)>>(std::move(changed));
    if (told_) main_.post(lifeline_.guard([this, number] { tell(number); }));
    wish();
    return Lease([this, alive = std::weak_ptr(alive_), number] {
      if (!alive.expired()) watchers_.erase(number);
    });
  }

 private:
  struct Call {
    BusCall what;
    Write write;
    Answer answered;
    Lease limit;
    std::unique_ptr<sdbus::IProxy> proxy;  // sent while there is one
  };
  struct Subscription {
    std::string rule;
    std::shared_ptr<Heard> heard;
  };

  // Wanted from now on: at the end of this turn, so that all who begin together are in it. One whose retry is waiting
  // goes at once.
  void wish() {
    if (bus_ || opening_) return;
    opening_ = true;
    retry_.release();
    main_.post(lifeline_.guard([this] { startOpening(); }));
  }

  void startOpening() {
    if (!addresses_) return opened(std::unexpected(busError(BusError::noBus, "There is no such bus")));
    std::map<std::uint64_t, std::string> rules;
    for (const auto& [number, subscription] : subscriptions_) rules.emplace(number, subscription.rule);
    runThen(
        work_, main_,
        [addresses = *addresses_, rules = std::move(rules), greeting = habits_.greeting] {
          return open(addresses, rules, greeting);
        },
        lifeline_.guard([this](Result<Opened> result) { opened(std::move(result)); }));
  }

  void opened(Result<Opened> result) {
    opening_ = false;
    if (!result) return closed(result.error());
    bus_ = std::move(result->bus);
    inbox_ = std::move(result->inbox);
    socket_.emplace(loop_, bus_->getEventLoopPollData().fd, [this](DescriptorEvents) { process(); });
    if (!socket_->works()) return lost();
    delay_ = habits_.firstRetry;
    std::vector<std::uint64_t> waiting;
    for (const auto& [number, call] : calls_) waiting.push_back(number);
    for (const auto number : waiting) send(number);
    // Signals may have come along with what was read while it opened.
    process();
    if (bus_) nowConnected(true);
  }

  void send(std::uint64_t number) {
    auto& call = calls_.at(number);
    bool written = false;
    try {
      call.proxy = sdbus::createProxy(*bus_, call.what.object.owner, call.what.object.path);
      auto message = call.proxy->createMethodCall(call.what.object.interface, call.what.method);
      call.write(message);
      written = true;
      const auto put = [inbox = inbox_, number](sdbus::MethodReply& reply, const sdbus::Error* error) {
        inbox->push_back({.to = number});
        if (error != nullptr)
          inbox->back().error = *error;
        else
          inbox->back().reply = reply;
      };
      call.proxy->callMethod(message, put, kNoLimit);
    } catch (const std::exception& problem) {
      // A bus that is gone is noticed by reading, too.
      fail(number, busError(written ? BusError::noBus : BusError::unreadable, problem.what()));
    }
    awaitMore();
  }

  void awaitMore(bool more = false) {
    auto events = DescriptorEvents::readable;
    try {
      const auto poll = bus_->getEventLoopPollData();
      events = eventsOf(poll.events);
      // A connection that is closing has nothing to poll for and still something to say.
      more = more || poll.getRelativeTimeout() == Duration::zero();
    } catch (const std::exception&) {
      more = true;
    }
    socket_->await(events);
    if (more && !std::exchange(processesAgain_, true)) main_.post(lifeline_.guard([this] { process(); }));
  }

  void process() {
    processesAgain_ = false;
    if (!bus_) return;
    bool works = true;
    bool more = true;
    try {
      for (int i = 0; more && i < kMessagesATurn; ++i) more = bus_->processPendingRequest();
    } catch (const std::exception&) {
      works = false;
    }
    for (; !inbox_->empty(); inbox_->pop_front()) {
      auto arrival = std::make_shared<Arrival>(std::move(inbox_->front()));
      arrival->bus = bus_;
      main_.post(lifeline_.guard([this, arrival] { deliver(*arrival); }));
    }
    if (!works) return lost();
    awaitMore(more);
  }

  void deliver(Arrival& arrival) {
    if (arrival.reply) return finish(arrival.to, &*arrival.reply);
    if (arrival.error) return finish(arrival.to, std::unexpected(busErrorOf(*arrival.error)));
    const auto found = subscriptions_.find(arrival.to);
    if (found == subscriptions_.end() || !arrival.signal) return;
    const auto heard = found->second.heard;  // it may end its own subscription
    try {
      (*heard)(*arrival.signal);
    } catch (const std::exception&) {
      return;
    }
  }

  void finish(std::uint64_t number, Result<sdbus::Message*> answer) {
    auto call = calls_.extract(number);
    if (call.empty()) return;  // its limit has passed
    call.mapped().proxy.reset();
    call.mapped().answered(answer);
  }

  // In a later turn, behind what has come in already.
  void fail(std::uint64_t number, Error error) {
    main_.post(lifeline_.guard(
        [this, number, error = std::move(error)]() mutable { finish(number, std::unexpected(std::move(error))); }));
  }

  void lost() {
    socket_.reset();
    for (auto& [number, call] : calls_) call.proxy.reset();
    inbox_.reset();
    bus_.reset();
    closed(busError(BusError::noBus, "The bus was lost"));
  }

  void closed(const Error& why) {
    for (const auto& [number, call] : calls_) fail(number, why);
    nowConnected(false);
    if (!addresses_ || (subscriptions_.empty() && watchers_.empty())) return;
    retry_ = main_.after(
        delay_, [this] { wish(); }, delay_ / 2);
    delay_ = std::min(delay_ * 2, habits_.lastRetry);
  }

  void nowConnected(bool connected) {
    if (told_ == connected) return;
    told_ = connected;
    for (const auto& [number, changed] : watchers_)
      main_.post(lifeline_.guard([this, number = number] { tell(number); }));
  }

  void tell(std::uint64_t number) {
    const auto found = watchers_.find(number);
    if (found == watchers_.end()) return;
    const auto changed = found->second;
    (*changed)(*told_);
  }

  uv_loop_s* loop_;
  MainQueue& main_;
  WorkQueue& work_;
  std::optional<std::string> addresses_;
  BusHabits habits_;
  Duration delay_;
  Lease retry_;
  bool opening_ = false;
  bool processesAgain_ = false;
  std::optional<bool> told_;
  std::uint64_t last_ = 0;
  std::map<std::uint64_t, Subscription> subscriptions_;
  std::map<std::uint64_t, std::shared_ptr<std::function<void(bool)>>> watchers_;
  OpenBus bus_;  // before what leans on it
  std::shared_ptr<Inbox> inbox_;
  std::optional<UvDescriptor> socket_;
  std::map<std::uint64_t, Call> calls_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  Lifeline lifeline_;
};

BusLink::BusLink(uv_loop_s* loop, MainQueue& main, WorkQueue& work, std::optional<std::string> addresses,
                 BusHabits habits)
    : impl_(std::make_unique<Impl>(loop, main, work, std::move(addresses), habits)) {}

BusLink::~BusLink() = default;

void BusLink::call(BusCall what, Duration limit, Write write, Answer answered) {
  impl_->call(std::move(what), limit, std::move(write), std::move(answered));
}
void BusLink::emit(const BusCall& what, Write write) { impl_->emit(what, write); }
Lease BusLink::subscribe(std::string rule, Heard heard) { return impl_->subscribe(std::move(rule), std::move(heard)); }
Lease BusLink::watch(std::function<void(bool connected)> changed) { return impl_->watch(std::move(changed)); }

}  // namespace corvane
