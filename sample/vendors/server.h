// The vendors' server: HTTP on the loopback address, one thread, libuv.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include "base/error.h"

namespace corvane::sample {

struct ServerSpec {
  std::filesystem::path sample;  // the sample's folder; pages are under "vendor", the pid file is var/run/vendors.pid
  int port = 0;                  // 0 lets the system choose one
  std::chrono::milliseconds lifetime = std::chrono::hours(12);  // then it stops by itself
};

class Server {
 public:
  // Binds the port and writes the pid file. Fails when the port is taken or the folder is no sample's.
  [[nodiscard]] static Result<std::unique_ptr<Server>> create(ServerSpec spec);
  ~Server();

  [[nodiscard]] int port() const;

  // Serves until the lifetime is over, SIGTERM or SIGINT arrives, or the folder has gone.
  void run();

  // Any thread: ends `run`, also one that is yet to begin.
  void stop();

 private:
  struct Loop;
  explicit Server(std::unique_ptr<Loop> loop);
  std::unique_ptr<Loop> loop_;
};

}  // namespace corvane::sample
