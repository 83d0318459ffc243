// Work off the main thread, on two threads of its own.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "base/work_queue.h"

namespace corvane {

// The threads start with the first jobs, so that a program at rest has none. A job and what it captured are
// destroyed on the thread that ran it. Dying waits for the jobs that run and destroys those that wait.
class UvWorkQueue final : public WorkQueue {
 public:
  UvWorkQueue() = default;
  ~UvWorkQueue() override;
  UvWorkQueue(const UvWorkQueue&) = delete;
  UvWorkQueue& operator=(const UvWorkQueue&) = delete;

  void run(Task job) override;

 private:
  void serve();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> jobs_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  bool closing_ = false;
};

}  // namespace corvane
