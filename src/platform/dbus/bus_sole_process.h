// The one process of a program by a name on the session bus.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/sole_process.h"

struct uv_loop_s;

namespace corvane {

// `refused` carries the words of the other process. The loop outlives it.
class BusSoleProcess final : public SoleProcess {
 public:
  // How long the bus may take to answer, and the other process to take a message: it may be about to end, which takes
  // as long as the desktop is slow.
  struct Patience {
    std::chrono::milliseconds bus{2000};
    std::chrono::milliseconds other{7000};
  };

  // `addresses` as the environment gives them; absent: there is no bus. The object lies at the path that the name's
  // words make.
  BusSoleProcess(uv_loop_s* loop, std::optional<std::string> addresses, std::string name, Patience patience);
  BusSoleProcess(uv_loop_s* loop, std::optional<std::string> addresses, std::string name)
      : BusSoleProcess(loop, std::move(addresses), std::move(name), Patience()) {}
  ~BusSoleProcess() override;
  BusSoleProcess(const BusSoleProcess&) = delete;
  BusSoleProcess& operator=(const BusSoleProcess&) = delete;

  Result<bool> claim() override;
  Status handOver(const std::string& message) override;
  void listen(std::function<Status(const std::string&)> received, Task lost) override;
  void leave() override;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane
