// The road to the root helper over its Unix-domain socket, on a libuv loop.
#pragma once

#include <filesystem>
#include <memory>
#include <set>

#include "base/main_queue.h"
#include "platform/helper_channel.h"

struct uv_loop_s;

namespace corvane {

// What can go wrong on the road; codes in the domain "CRVHelperChannel".
struct HelperChannelError {
  static constexpr const char* domain = "CRVHelperChannel";
  static constexpr int unreachable = 1;     // no socket, nobody listens, or no permission
  static constexpr int hungUp = 2;          // the connection ended before a whole answer
  static constexpr int answerTooLong = 3;   // above kAnswerFrameLimit
  static constexpr int requestTooLong = 4;  // above kRequestFrameLimit; nothing was sent
};

// No time-out of its own: a run takes as long as it takes. When this object dies, open requests are given up;
// the loop must outlive it.
class UvHelperChannel final : public HelperChannel {
 public:
  UvHelperChannel(uv_loop_s* loop, MainQueue& main, std::filesystem::path socket);
  ~UvHelperChannel() override;
  UvHelperChannel(const UvHelperChannel&) = delete;
  UvHelperChannel& operator=(const UvHelperChannel&) = delete;

  void request(std::string body, Completion<Result<std::string>> done) override;

 private:
  class Exchange;
  using Exchanges = std::set<Exchange*>;

  uv_loop_s* loop_;
  MainQueue& main_;
  std::filesystem::path socket_;
  std::shared_ptr<Exchanges> exchanges_;  // those whose handles are open
};

}  // namespace corvane
