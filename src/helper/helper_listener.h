// The helper's door: one socket a root, peers known by the kernel before a byte of theirs is read.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "base/main_queue.h"
#include "core/logging/logging_service.h"
#include "helper/helper_connection.h"
#include "platform/clock.h"

namespace corvane {

// Peers that are served at once: the application, corvanectl and some more; each may have several requests under way.
// Who may not ask takes no place, or a stranger could keep out those who may.
inline constexpr std::size_t kPeersLimit = 64;
// A user who may not ask gets one line in the log this often, however often they try.
inline constexpr Duration kRefusalLogInterval = 1min;

// Main thread. The loop must outlive it, and turn once more after it has gone so that libuv's handles can end.
class HelperListener {
 public:
  struct Services {
    uv_loop_s* loop;
    MainQueue& main;
    LogSink& log;
    const Clock& clock;
  };
  struct Rules {
    std::filesystem::path socket;       // its folder is made when missing
    std::function<bool(uid_t)> mayAsk;  // asked at each connection and again at each request
    HelperConnection::Handler handler;
    Duration peerIdleLimit = kPeerIdleLimit;
  };

  // Takes the lock beside the socket first, so that two helpers never serve one root, then replaces the socket
  // that an earlier one left. Everybody may connect, for the credentials decide. Fails with errno, in the
  // domain "CRVHelperListener"; with EALREADY when another helper holds the lock.
  [[nodiscard]] static Result<std::unique_ptr<HelperListener>> open(Services services, Rules rules);
  ~HelperListener();
  HelperListener(const HelperListener&) = delete;
  HelperListener& operator=(const HelperListener&) = delete;

  // Takes no further peers and no further requests; the socket is gone from the disk. `drained` runs in a later
  // turn, once every answer that is due has been written.
  void stop(Task drained);

  // Those that are served.
  [[nodiscard]] std::size_t peers() const { return peers_.size(); }

 private:
  struct Socket;
  HelperListener(Services services, Rules rules);
  [[nodiscard]] Status bind();
  void greet();
  void serve(const std::shared_ptr<HelperConnection>& peer, uid_t uid);
  void tellRefused(std::optional<uid_t> uid);
  void left(const std::shared_ptr<HelperConnection>& peer);
  void tellDrained();

  Services s_;
  Rules rules_;
  Logger log_;
  int lock_ = -1;
  std::unique_ptr<Socket> socket_;
  std::set<std::shared_ptr<HelperConnection>> peers_;
  std::map<std::optional<uid_t>, SteadyTime> refusedAt_;
  Task drained_;
};

}  // namespace corvane
