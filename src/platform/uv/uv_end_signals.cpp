#include "platform/uv/uv_end_signals.h"

#include <signal.h>
#include <uv.h>

#include <memory>

namespace corvane {

struct UvEndSignals::Handle {
  uv_signal_t signal{};
  std::shared_ptr<std::function<void(int)>> told;
};

namespace {

bool isIgnored(int number) {
  struct sigaction now {};
  return ::sigaction(number, nullptr, &now) == 0 && (now.sa_flags & SA_SIGINFO) == 0 && now.sa_handler == SIG_IGN;
}

}  // namespace

UvEndSignals::UvEndSignals(uv_loop_s* loop, std::initializer_list<int> signals, std::function<void(int)> told) {
  const auto shared = std::make_shared<std::function<void(int)>>(std::move(told));
  for (const int number : signals) {
    if (isIgnored(number)) continue;
    auto* handle = handles_.emplace_back(new Handle{.told = shared});
    handle->signal.data = handle;
    uv_signal_init(loop, &handle->signal);
    uv_unref(reinterpret_cast<uv_handle_t*>(&handle->signal));
    uv_signal_start(
        &handle->signal,
        [](uv_signal_t* signal, int heard) {
          const auto tell = static_cast<Handle*>(signal->data)->told;
          (*tell)(heard);
        },
        number);
  }
}

UvEndSignals::~UvEndSignals() {
  for (auto* handle : handles_)
    uv_close(reinterpret_cast<uv_handle_t*>(&handle->signal),
             [](uv_handle_t* signal) { delete static_cast<Handle*>(signal->data); });
}

}  // namespace corvane
