#include "platform/uv/uv_descriptor.h"

#include <uv.h>

#include <utility>

namespace corvane {

struct UvDescriptor::Handle {
  uv_poll_t poll{};
  std::function<void(DescriptorEvents)> ready;
  DescriptorEvents awaited = DescriptorEvents::none;
  bool live = true;
};

UvDescriptor::UvDescriptor(uv_loop_s* loop, int descriptor, std::function<void(DescriptorEvents)> ready)
    : handle_(new Handle), works_(uv_poll_init(loop, &handle_->poll, descriptor) == 0) {
  handle_->ready = std::move(ready);
  handle_->poll.data = handle_;
  if (works_) uv_unref(reinterpret_cast<uv_handle_t*>(&handle_->poll));
}

UvDescriptor::~UvDescriptor() {
  handle_->live = false;
  if (works_)
    uv_close(reinterpret_cast<uv_handle_t*>(&handle_->poll),
             [](uv_handle_t* poll) { delete static_cast<Handle*>(poll->data); });
  else
    delete handle_;
}

void UvDescriptor::await(DescriptorEvents events) {
  if (!works_ || events == std::exchange(handle_->awaited, events)) return;
  if (events == DescriptorEvents::none) return static_cast<void>(uv_poll_stop(&handle_->poll));
  const int wanted =
      ((static_cast<int>(events) & 1) != 0 ? UV_READABLE : 0) | ((static_cast<int>(events) & 2) != 0 ? UV_WRITABLE : 0);
  uv_poll_start(&handle_->poll, wanted, [](uv_poll_t* poll, int status, int found) {
    auto* handle = static_cast<Handle*>(poll->data);
    if (status < 0) handle->awaited = DescriptorEvents::none;  // libuv has stopped it
    const int which = ((found & UV_READABLE) != 0 ? 1 : 0) | ((found & UV_WRITABLE) != 0 ? 2 : 0);
    if (handle->live) handle->ready(status < 0 ? DescriptorEvents::both : static_cast<DescriptorEvents>(which));
  });
}

}  // namespace corvane
