#include "platform/scripted/scripted_helper_channel.h"

#include <utility>

namespace corvane {

namespace {

Error channelError(int code, std::string text) {
  return {.domain = "CRVHelperChannel", .code = code, .text = std::move(text)};
}

}  // namespace

Error scriptedUnreachable() { return channelError(1, "The helper cannot be reached: connection refused"); }
Error scriptedHungUp() { return channelError(2, "The helper ended the connection without an answer."); }

ScriptedHelperChannel::~ScriptedHelperChannel() {
  for (auto& waiting : waiting_) waiting.done.abandon();
}

void ScriptedHelperChannel::request(std::string body, Completion<Result<std::string>> done) {
  auto answer = handler_ ? handler_(body) : ScriptedAnswer{.body = std::unexpected(scriptedUnreachable())};
  requests_.push_back(std::move(body));
  const auto place = waiting_.insert(waiting_.end(), Waiting{.done = std::move(done)});
  if (answer.body) answerAfter(answer.takes, place, std::move(*answer.body));
}

void ScriptedHelperChannel::answerAfter(Duration delay, Place place, Result<std::string> body) {
  place->answer = main_.after(delay, [this, place, body = std::move(body)]() mutable {
    auto answered = std::move(*place);
    waiting_.erase(place);
    answered.done(std::move(body));
  });
}

void ScriptedHelperChannel::hangUp() {
  for (auto place = waiting_.begin(); place != waiting_.end(); ++place)
    answerAfter(Duration::zero(), place, std::unexpected(scriptedHungUp()));
}

}  // namespace corvane
