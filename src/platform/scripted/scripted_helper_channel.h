// A helper that answers to order.
#pragma once

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "platform/helper_channel.h"

namespace corvane {

// One answer and how long it takes; an absent body never comes, as from a helper that hangs.
struct ScriptedAnswer {
  std::optional<Result<std::string>> body = std::string();
  Duration takes = Duration::zero();
};

class ScriptedHelperChannel final : public HelperChannel {
 public:
  using Handler = std::function<ScriptedAnswer(const std::string& body)>;

  // Without a handler nobody listens: requests fail as unreachable.
  explicit ScriptedHelperChannel(MainQueue& main, Handler handler = nullptr)
      : main_(main), handler_(std::move(handler)) {}
  ~ScriptedHelperChannel() override;

  void setHandler(Handler handler) { handler_ = std::move(handler); }
  [[nodiscard]] const std::vector<std::string>& requests() const { return requests_; }
  // The helper dies: all that waits for an answer fails with hungUp, in a later turn.
  void hangUp();

  void request(std::string body, Completion<Result<std::string>> done) override;

 private:
  struct Waiting {
    Completion<Result<std::string>> done;
    Lease answer;
  };
  using Place = std::list<Waiting>::iterator;
  void answerAfter(Duration delay, Place place, Result<std::string> body);

  MainQueue& main_;
  Handler handler_;
  std::vector<std::string> requests_;
  std::list<Waiting> waiting_;
};

// The error of a helper out of reach, with the real channel's domain and codes.
[[nodiscard]] Error scriptedUnreachable();
[[nodiscard]] Error scriptedHungUp();

}  // namespace corvane
