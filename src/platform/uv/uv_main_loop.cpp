#include "platform/uv/uv_main_loop.h"

#include <unistd.h>
#include <uv.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "base/turn_queue.h"

namespace corvane {
namespace {

void require(int status, const char* what) {
  if (status == 0) return;
  std::fprintf(stderr, "The event loop cannot start: %s: %s\n", what, uv_strerror(status));
  std::exit(EXIT_FAILURE);
}

// Rounded up, so that a timer never comes a moment early and turns in vain.
std::uint64_t wholeMilliseconds(Duration wait) {
  return static_cast<std::uint64_t>(std::chrono::ceil<std::chrono::milliseconds>(wait).count());
}

}  // namespace

struct UvMainLoop::Impl {
  Impl(const Clock& machine, int clockJumps)
      : clock(machine),
        jumpsDescriptor(clockJumps),
        queue(std::in_place,
              TurnClock{.steady = [this] { return clock.steadyNow(); }, .wall = [this] { return clock.now(); }},
              [this] { uv_async_send(&wake); }) {
    require(uv_loop_init(&loop), "loop");
    require(uv_async_init(&loop, &wake, [](uv_async_t* handle) { static_cast<Impl*>(handle->data)->runTurn(); }),
            "wake-up");
    require(uv_timer_init(&loop, &timer), "timer");
    wake.data = timer.data = jumps.data = this;
    if (jumpsDescriptor < 0) return;
    require(uv_poll_init(&loop, &jumps, jumpsDescriptor), "clock");
    require(uv_poll_start(&jumps, UV_READABLE,
                          [](uv_poll_t* handle, int, int) { static_cast<Impl*>(handle->data)->clockJumped(); }),
            "clock");
  }

  ~Impl() {
    // First, while posts that dying closures make can still wake the loop.
    queue.reset();
    uv_close(reinterpret_cast<uv_handle_t*>(&wake), nullptr);
    uv_close(reinterpret_cast<uv_handle_t*>(&timer), nullptr);
    if (jumpsDescriptor >= 0) uv_close(reinterpret_cast<uv_handle_t*>(&jumps), nullptr);
    uv_run(&loop, UV_RUN_NOWAIT);
    // Another adapter's handle that is still open keeps its memory; the loop's own descriptors close with
    // the process then.
    uv_loop_close(&loop);
  }

  // What the descriptor gives says nothing; that it could be read does.
  void clockJumped() {
    std::uint64_t told = 0;
    [[maybe_unused]] const auto size = ::read(jumpsDescriptor, &told, sizeof told);
    runTurn();
  }

  void runTurn() {
    queue->runReady();
    if (const auto wait = queue->timeToNext(TurnQueue::Leeway::used)) {
      uv_update_time(&loop);
      uv_timer_start(
          &timer, [](uv_timer_t* handle) { static_cast<Impl*>(handle->data)->runTurn(); }, wholeMilliseconds(*wait), 0);
    } else {
      uv_timer_stop(&timer);
    }
  }

  const Clock& clock;
  uv_loop_t loop{};
  uv_async_t wake{};
  uv_timer_t timer{};
  uv_poll_t jumps{};
  int jumpsDescriptor;
  std::optional<int> code;
  std::optional<TurnQueue> queue;
};

UvMainLoop::UvMainLoop(const Clock& clock, int clockJumps) : impl_(std::make_unique<Impl>(clock, clockJumps)) {}
UvMainLoop::~UvMainLoop() = default;

MainQueue& UvMainLoop::mainQueue() { return *impl_->queue; }
uv_loop_s* UvMainLoop::loop() { return &impl_->loop; }

int UvMainLoop::run() {
  while (!impl_->code) uv_run(&impl_->loop, UV_RUN_ONCE);
  return *impl_->code;
}

void UvMainLoop::quit(int code) {
  impl_->code = code;
  uv_async_send(&impl_->wake);
}

bool UvMainLoop::pump(const std::function<bool()>& done, Duration limit) {
  bool expired = false;
  const auto alarm = impl_->queue->after(
      limit, [&expired] { expired = true; }, Duration::zero());
  while (!done()) {
    if (expired || impl_->code) return false;
    uv_run(&impl_->loop, UV_RUN_ONCE);
  }
  return true;
}

void UvMainLoop::turn() { uv_run(&impl_->loop, UV_RUN_NOWAIT); }

int UvMainLoop::pollableDescriptor() const { return uv_backend_fd(&impl_->loop); }

std::optional<Duration> UvMainLoop::waitAtMost() const {
  uv_update_time(&impl_->loop);
  const int milliseconds = uv_backend_timeout(&impl_->loop);
  if (milliseconds < 0) return std::nullopt;
  return std::chrono::milliseconds(milliseconds);
}

std::optional<int> UvMainLoop::quitCode() const { return impl_->code; }

}  // namespace corvane
