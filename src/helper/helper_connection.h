// One peer of the helper: frames in, answers out, within limits. Understands bodies only as far as
// parseRequest() does, and never decides what is done about them.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/date.h"
#include "base/frame.h"
#include "base/task.h"
#include "core/client/helper_messages.h"

struct uv_loop_s;
struct uv_stream_s;

namespace corvane {

// No whole request in this time while no answer is due, or the oldest answer not taken, and the connection ends.
inline constexpr Duration kPeerIdleLimit = 30s;
// With so many answers that the peer has not taken, no further request of its is read: what is asked for and never
// taken stays in memory.
inline constexpr std::size_t kUntakenAnswersLimit = 4;
// Requests of one peer that wait for their answers; the next one ends the connection.
inline constexpr std::size_t kPeerRequestsLimit = 16;

// Main thread. Held by shared pointers, since libuv closes its handles in a later turn.
class HelperConnection final : public std::enable_shared_from_this<HelperConnection> {
 public:
  // `answer` takes the finished body and may be run at any time later, also after the peer has gone.
  using Handler = std::function<void(HelperRequest request, Completion<std::string> answer)>;
  using Closed = std::function<void(const std::shared_ptr<HelperConnection>&)>;

  // Takes the next connection of `listening`; null when it is gone already.
  static std::shared_ptr<HelperConnection> accept(uv_loop_s* loop, uv_stream_s* listening, Duration idleLimit,
                                                  Closed closed);
  ~HelperConnection();
  HelperConnection(const HelperConnection&) = delete;
  HelperConnection& operator=(const HelperConnection&) = delete;

  // Who the kernel says is at the other end; absent when it does not.
  [[nodiscard]] std::optional<uid_t> peerUid() const;

  // From now on requests are read. Called once, for peers that may ask.
  void serve(Handler handler);

  // For a peer that is not served: tells the error as far as the socket takes it at once, and ends the connection.
  void turnAway(const Error& error);

  // Answers with the error and ends the connection once that is written. Nothing more is read.
  void refuse(std::string_view id, const Error& error);

  // Reads nothing more; ends when the answers that are due have been written.
  void closeWhenAnswered();
  void closeNow();

 private:
  struct Handles;
  HelperConnection(Duration idleLimit, Closed closed);
  void took(std::string_view bytes);
  void takeRequests();
  void takeRequest(const std::string& body);
  void ended();
  void answer(std::string_view id, std::string body);
  void write(const std::string& body);
  void written(bool ok);
  void startReading();
  void stopReading();
  void restartIdleLimit();
  void idledOut();
  void closeIfDone();

  Duration idleLimit_;
  Closed closed_;
  Handler handler_;
  FrameDecoder decoder_;
  std::unique_ptr<Handles> handles_;
  std::shared_ptr<HelperConnection> keepAlive_;  // while libuv holds the handles
  std::size_t unanswered_ = 0;
  std::size_t unwritten_ = 0;
  bool reading_ = false;
  bool last_ = false;     // no further request is taken
  bool refused_ = false;  // and none that waits is answered
};

}  // namespace corvane
