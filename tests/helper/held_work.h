// Work that is done when the test says so.
#pragma once

#include <deque>
#include <utility>

#include "base/work_queue.h"

namespace corvane {

struct HeldWork final : WorkQueue {
  std::deque<Task> jobs;

  void run(Task job) override { jobs.push_back(std::move(job)); }
  void finish(std::size_t place = 0) {
    auto job = std::move(jobs.at(place));
    jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(place));
    job();
  }
};

}  // namespace corvane
