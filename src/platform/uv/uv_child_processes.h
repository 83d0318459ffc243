// Child processes on a libuv loop. Never a shell, never a search of PATH.
#pragma once

#include <memory>
#include <set>

#include "base/main_queue.h"
#include "platform/child_processes.h"

struct uv_loop_s;

namespace corvane {

constexpr Duration kChildKillDelay = 5s;    // from the time limit's polite signal to the forced one
constexpr Duration kChildStreamLimit = 2s;  // how long streams may stay open after the child ended: a process
                                            // that it left behind can hold them for ever
constexpr Duration kChildGroupLook = 50ms;  // how often a group that was told to end is looked at: nothing tells
                                            // of the end of a process that is not our child
constexpr std::size_t kChildLineLimit = 64U << 10U;  // longer lines reach `onLine` in pieces of this size

struct ChildLimits {
  Duration killDelay = kChildKillDelay;
  Duration streamLimit = kChildStreamLimit;
};

// Children get /dev/null as their input and real pipes as their output, so that scripts may reopen them by
// name. Failures to start are in the domain "CRVChildProcess" with errno as code. When this object dies, what
// still runs goes on, unwatched, and completions that are due are given up; the loop must outlive it.
class UvChildProcesses final : public ChildProcesses {
 public:
  static constexpr const char* errorDomain = "CRVChildProcess";

  UvChildProcesses(uv_loop_s* loop, MainQueue& main, ChildLimits limits = {});
  ~UvChildProcesses() override;
  UvChildProcesses(const UvChildProcesses&) = delete;
  UvChildProcesses& operator=(const UvChildProcesses&) = delete;

  std::shared_ptr<ChildHandle> start(ChildSpec spec, std::function<void(std::string_view)> onLine,
                                     Completion<Result<ChildExit>> done) override;

 private:
  class Child;
  using Children = std::set<Child*>;

  uv_loop_s* loop_;
  MainQueue& main_;
  ChildLimits limits_;
  std::shared_ptr<Children> children_;  // those whose handles are open
};

}  // namespace corvane
