// Tells that something in a folder changed. What changed is for the owner to find out.
#pragma once

#include <filesystem>
#include <functional>

#include "base/lease.h"
#include "base/main_queue.h"

struct uv_loop_s;

namespace corvane {

// Main thread. The loop must outlive this object and its leases.
class UvFileWatch {
 public:
  UvFileWatch(uv_loop_s* loop, MainQueue& main) : loop_(loop), main_(main) {}

  // Calls `changed` in a later turn, once for all events of a turn. A folder that does not exist yet is
  // awaited through the nearest one above it that does, and its coming counts as a change; so does its going.
  [[nodiscard]] Lease watch(const std::filesystem::path& folder, std::function<void()> changed);

 private:
  uv_loop_s* loop_;
  MainQueue& main_;
};

}  // namespace corvane
