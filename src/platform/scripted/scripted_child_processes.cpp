#include "platform/scripted/scripted_child_processes.h"

#include <csignal>
#include <utility>

namespace corvane {

class ScriptedChildProcesses::Child final : public ChildHandle, public std::enable_shared_from_this<Child> {
 public:
  Child(ScriptedChildProcesses& owner, pid_t number, ScriptedChild script, std::function<void(std::string_view)> onLine,
        Completion<Result<ChildExit>> done)
      : owner_(owner),
        number_(script.exit ? number : 0),
        script_(std::move(script)),
        onLine_(std::move(onLine)),
        done_(std::move(done)) {}
  ~Child() override { done_.abandon(); }

  void start(std::optional<Duration> timeLimit) {
    const bool late = timeLimit && script_.exit && *timeLimit < script_.takes;
    end_ = owner_.main_.after(late ? *timeLimit : script_.takes,
                              [this, late] { late ? endBySignal(SIGTERM, true) : end(); });
  }

  [[nodiscard]] pid_t pid() const override { return number_; }
  void terminate() override {
    if (script_.heedsTerminate) endSoon(SIGTERM);
  }
  void kill() override { endSoon(SIGKILL); }
  void letGo() {
    end_.release();
    done_.abandon();
  }

 private:
  void endSoon(int signal) {
    if (!done_) return;
    end_ = owner_.main_.after(Duration::zero(), [this, signal] { endBySignal(signal, false); });
  }

  void endBySignal(int signal, bool timedOut) {
    script_.exit = ChildExit{.code = 128 + signal, .timedOut = timedOut};
    if (!timedOut) script_.lines.clear();
    end();
  }

  void end() {
    const auto self = shared_from_this();
    if (onLine_)
      for (const auto& line : script_.lines) onLine_(line);
    owner_.ended(self);
    if (done_) std::exchange(done_, {})(std::move(script_.exit));
  }

  ScriptedChildProcesses& owner_;
  pid_t number_;
  ScriptedChild script_;
  std::function<void(std::string_view)> onLine_;
  Completion<Result<ChildExit>> done_;
  Lease end_;
};

ScriptedChildProcesses::~ScriptedChildProcesses() {
  for (const auto& child : children_) child->letGo();
}

void ScriptedChildProcesses::ended(const std::shared_ptr<Child>& child) { std::erase(children_, child); }

std::size_t ScriptedChildProcesses::running() const { return children_.size(); }

std::shared_ptr<ChildHandle> ScriptedChildProcesses::start(ChildSpec spec, std::function<void(std::string_view)> onLine,
                                                           Completion<Result<ChildExit>> done) {
  const auto child = std::make_shared<Child>(*this, nextPid_++, script_(spec), std::move(onLine), std::move(done));
  children_.push_back(child);
  child->start(spec.timeLimit);
  started_.push_back(std::move(spec));
  return child;
}

}  // namespace corvane
