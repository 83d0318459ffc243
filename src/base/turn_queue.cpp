#include "base/turn_queue.h"

#include <algorithm>
#include <cassert>

namespace corvane {
namespace {

// How long a set wall clock may go unnoticed where nothing else tells of it.
constexpr Duration kWallLook = 1min;

}  // namespace

TurnQueue::TurnQueue(TurnClock clock, std::function<void()> wake)
    : clock_(std::move(clock)), wake_(std::move(wake)), mainThread_(std::this_thread::get_id()) {}

TurnQueue::~TurnQueue() {
  // What dropped closures hold may release leases of ours or post once more.
  const auto steady = std::exchange(steadyTimers_, {});
  const auto wall = std::exchange(wallTimers_, {});
  for (const auto& [key, timer] : steady) timer->queue = nullptr;
  for (const auto& [key, timer] : wall) timer->queue = nullptr;
  std::vector<Task> posts;
  {
    const std::scoped_lock lock(postsMutex_);
    posts.swap(posts_);
  }
}

bool TurnQueue::isMainThread() const { return std::this_thread::get_id() == mainThread_; }

void TurnQueue::post(Task task) {
  {
    const std::scoped_lock lock(postsMutex_);
    posts_.push_back(std::move(task));
    posted_ = true;
  }
  if (!isMainThread() || !running_) wake_();
}

Lease TurnQueue::after(Duration delay, Task task, Duration leeway) {
  auto timer = std::make_shared<Timer>();
  timer->leeway = leeway;
  timer->task = std::move(task);
  timer->steadyDue = clock_.steady() + std::max(delay, Duration::zero());
  return arm(timer);
}

Lease TurnQueue::every(Duration interval, std::move_only_function<void()> task, Duration leeway) {
  assert(interval > Duration::zero());
  auto timer = std::make_shared<Timer>();
  timer->interval = std::max(interval, Duration(1ms));
  timer->leeway = leeway;
  timer->task = std::move(task);
  timer->steadyDue = clock_.steady() + timer->interval;
  return arm(timer);
}

Lease TurnQueue::at(Date date, Task task) {
  auto timer = std::make_shared<Timer>();
  timer->wall = true;
  timer->task = std::move(task);
  timer->wallDue = date;
  return arm(timer);
}

Lease TurnQueue::arm(const std::shared_ptr<Timer>& timer) {
  assert(isMainThread());
  timer->queue = this;
  enqueue(timer);
  if (!running_) wake_();
  return Lease([weak = std::weak_ptr(timer)] {
    if (const auto live = weak.lock(); live && live->queue != nullptr) live->queue->cancel(*live);
  });
}

void TurnQueue::enqueue(const std::shared_ptr<Timer>& timer) {
  timer->id = nextId_++;
  if (timer->wall)
    wallTimers_.emplace(WallKey{timer->wallDue, timer->id}, timer);
  else
    steadyTimers_.emplace(SteadyKey{timer->steadyDue, timer->id}, timer);
}

void TurnQueue::dequeue(const Timer& timer) {
  if (timer.wall)
    wallTimers_.erase({timer.wallDue, timer.id});
  else
    steadyTimers_.erase({timer.steadyDue, timer.id});
}

void TurnQueue::cancel(Timer& timer) {
  timer.cancelled = true;
  dequeue(timer);
}

bool TurnQueue::runPosts() {
  if (!hasPosts()) return false;
  auto batch = std::exchange(spare_, {});
  {
    const std::scoped_lock lock(postsMutex_);
    batch.swap(posts_);
    posted_ = false;
  }
  for (auto& post : batch) {
    auto task = std::move(post);  // gone before the next one runs
    task();
  }
  batch.clear();
  spare_ = std::move(batch);
  return true;
}

std::shared_ptr<TurnQueue::Timer> TurnQueue::takeDue(const Instant& now, std::uint64_t armedBefore) {
  // A timer armed since the turn began may stand first without being meant; those behind it still are.
  const auto first = [armedBefore](auto& timers, auto limit) {
    const auto meant = [&](const auto& entry) { return entry.first.first > limit || entry.first.second < armedBefore; };
    const auto found = std::ranges::find_if(timers, meant);
    return found != timers.end() && found->first.first <= limit ? found : timers.end();
  };
  const auto take = [](auto& timers, auto place) {
    auto timer = std::move(place->second);
    timers.erase(place);
    return timer;
  };
  const auto steady = first(steadyTimers_, now.steady);
  const auto wall = first(wallTimers_, now.wall);
  if (wall == wallTimers_.end()) return steady == steadyTimers_.end() ? nullptr : take(steadyTimers_, steady);
  if (steady == steadyTimers_.end()) return take(wallTimers_, wall);
  // Both kinds share one order: by how long each has been due, then by arming.
  const auto wallAge = now.wall - wall->first.first;
  const auto steadyAge = now.steady - steady->first.first;
  const bool wallFirst = wallAge > steadyAge || (wallAge == steadyAge && wall->first.second < steady->first.second);
  return wallFirst ? take(wallTimers_, wall) : take(steadyTimers_, steady);
}

void TurnQueue::fire(const std::shared_ptr<Timer>& timer, SteadyTime now) {
  if (timer->interval > Duration::zero()) {
    const auto missed = (now - timer->steadyDue) / timer->interval;
    timer->steadyDue += timer->interval * (missed + 1);
    enqueue(timer);
  }
  timer->task();
}

bool TurnQueue::runReady() {
  assert(isMainThread() && !running_ && "turns do not nest");
  running_ = true;
  const auto armedBefore = nextId_;
  bool any = runPosts();
  const Instant now{.steady = clock_.steady(), .wall = clock_.wall()};
  while (const auto timer = takeDue(now, armedBefore)) {
    any = true;
    fire(timer, now.steady);
    runPosts();
  }
  running_ = false;
  return any;
}

std::optional<Duration> TurnQueue::timeToNext(Leeway leeway) const {
  if (hasPosts()) return Duration::zero();
  std::optional<Duration> next;
  const auto offer = [&next](Duration wait) {
    wait = std::max(wait, Duration::zero());
    if (!next || wait < *next) next = wait;
  };
  const auto steadyNow = clock_.steady();
  for (const auto& [key, timer] : steadyTimers_) {
    const auto wait = key.first - steadyNow;
    if (next && wait >= *next) break;
    offer(wait + (leeway == Leeway::used ? timer->leeway : Duration::zero()));
  }
  if (!wallTimers_.empty()) offer(std::min(wallTimers_.begin()->first.first - clock_.wall(), kWallLook));
  return next;
}

}  // namespace corvane
