#include "platform/uv/uv_work_queue.h"

#include <utility>

namespace corvane {
namespace {

// Enough for one long job (a scan) and the short ones beside it.
constexpr std::size_t kThreads = 2;

}  // namespace

UvWorkQueue::~UvWorkQueue() {
  std::deque<Task> dropped;
  {
    const std::scoped_lock lock(mutex_);
    closing_ = true;
    dropped.swap(jobs_);
  }
  changed_.notify_all();
  for (auto& thread : threads_) thread.join();
}

void UvWorkQueue::run(Task job) {
  {
    const std::scoped_lock lock(mutex_);
    jobs_.push_back(std::move(job));
    if (jobs_.size() > idle_ && threads_.size() < kThreads) threads_.emplace_back([this] { serve(); });
  }
  changed_.notify_one();
}

void UvWorkQueue::serve() {
  std::unique_lock lock(mutex_);
  while (true) {
    ++idle_;
    changed_.wait(lock, [this] { return closing_ || !jobs_.empty(); });
    --idle_;
    if (closing_) return;
    {
      auto job = std::move(jobs_.front());
      jobs_.pop_front();
      lock.unlock();
      job();
    }
    lock.lock();
  }
}

}  // namespace corvane
