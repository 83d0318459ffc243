// Children that end as they are told, on whatever queue is given.
#pragma once

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "base/main_queue.h"
#include "platform/child_processes.h"

namespace corvane {

// What one child does. A time limit shorter than `takes` ends it as the real ones end: with 128 + 15.
struct ScriptedChild {
  Result<ChildExit> exit = ChildExit{};
  std::vector<std::string> lines = {};  // told one after the other before the end, in one turn
  Duration takes = Duration::zero();
  bool heedsTerminate = true;
};

class ScriptedChildProcesses final : public ChildProcesses {
 public:
  // `script` is asked at each start and says what that child does.
  ScriptedChildProcesses(MainQueue& main, std::function<ScriptedChild(const ChildSpec&)> script)
      : main_(main), script_(std::move(script)) {}
  ~ScriptedChildProcesses() override;

  // What was started, in order.
  [[nodiscard]] const std::vector<ChildSpec>& started() const { return started_; }
  // The same, and forgets them.
  std::vector<ChildSpec> takeStarted() { return std::exchange(started_, {}); }
  [[nodiscard]] std::size_t running() const;

  std::shared_ptr<ChildHandle> start(ChildSpec spec, std::function<void(std::string_view)> onLine,
                                     Completion<Result<ChildExit>> done) override;

 private:
  class Child;
  void ended(const std::shared_ptr<Child>& child);

  MainQueue& main_;
  std::function<ScriptedChild(const ChildSpec&)> script_;
  std::vector<ChildSpec> started_;
  std::vector<std::shared_ptr<Child>> children_;
  pid_t nextPid_ = 9000;
};

}  // namespace corvane
