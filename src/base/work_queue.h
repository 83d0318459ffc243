// Work that leaves the main thread. Jobs take values, never references into the model.
#pragma once

#include <memory>
#include <utility>

#include "base/main_queue.h"

namespace corvane {

class WorkQueue {
 public:
  virtual ~WorkQueue() = default;

  // Main thread. Runs `job` off the main thread, some time, with no order promised between jobs.
  virtual void run(Task job) = 0;
};

// Runs `job` on `work` and then `then` with its value on `main`.
template <class Job, class Then>
void runThen(WorkQueue& work, MainQueue& main, Job job, Then then) {
  work.run([&main, job = std::move(job), then = std::move(then)]() mutable {
    auto value = std::make_unique<decltype(job())>(job());
    main.post([then = std::move(then), value = std::move(value)]() mutable { then(std::move(*value)); });
  });
}

}  // namespace corvane
