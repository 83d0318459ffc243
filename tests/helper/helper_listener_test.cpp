// The door alone, in front of this very process: who may ask is played.
#include "helper/helper_listener.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/posix/system_clock.h"
#include "platform/scripted/virtual_time.h"
#include "platform/uv/uv_main_loop.h"
#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "support/unix_socket.h"

namespace corvane {
namespace {

struct ListenerFixture : ::testing::Test {
  testing::TemporaryFolder folder;
  SystemClock clock;
  VirtualMachine machine;  // whose time the log's limit goes by
  UvMainLoop loop{clock};
  RecordingLog log;
  bool mayAsk = true;
  std::size_t strangers = 0;  // the next so many who knock may not ask
  std::string body;
  bool hold = false;  // answers come when the test gives them
  std::vector<Completion<std::string>> held;
  std::size_t handled = 0;
  std::unique_ptr<HelperListener> listener = opened(kPeerIdleLimit);

  ~ListenerFixture() override {
    listener.reset();
    loop.turn();
  }
  std::unique_ptr<HelperListener> opened(Duration idleLimit) {
    return HelperListener::open(
               {.loop = loop.loop(), .main = loop.mainQueue(), .log = log, .clock = machine.clock()},
               {.socket = folder.path() / "s",
                .mayAsk = [this](uid_t) { return isKnown(); },
                .handler = [this](const HelperRequest&, Completion<std::string> answer) { handle(std::move(answer)); },
                .peerIdleLimit = idleLimit})
        .value();
  }
  bool isKnown() {
    if (strangers == 0) return mayAsk;
    --strangers;
    return false;
  }
  void handle(Completion<std::string> answer) {
    ++handled;
    if (hold) return held.push_back(std::move(answer));
    answer(body);
  }
  void openWithIdleLimit(Duration limit) {
    listener.reset();
    listener = opened(limit);
  }
  void pass(Duration time) {
    loop.pump([] { return false; }, time);
  }
  [[nodiscard]] int connectTo() const {
    const int fd = testing::unixSocket(folder.path() / "s", ::connect, SOCK_NONBLOCK);
    EXPECT_GE(fd, 0);
    return fd;
  }
  static void ask(int fd, const std::string& id) {
    const auto frame = encodeFrame(composeRequest({.id = id, .question = ask::Status{}}));
    EXPECT_EQ(send(fd, frame.data(), frame.size(), MSG_NOSIGNAL), static_cast<ssize_t>(frame.size()));
  }
  int codeFor(int fd, const std::string& id) {
    FrameDecoder decoder(kAnswerFrameLimit);
    std::optional<std::string> answer;
    loop.pump(
        [&] {
          char buffer[4096];
          const auto got = recv(fd, buffer, sizeof buffer, 0);
          if (got > 0) (void)decoder.feed({buffer, static_cast<std::size_t>(got)});
          answer = decoder.next();
          return answer.has_value();
        },
        10s);
    if (!answer) return -1;
    const auto parsed = parseAnswer(*answer, id);
    return parsed ? 0 : parsed.error().code;
  }
  void waitUntilGone() {
    EXPECT_TRUE(loop.pump([this] { return listener->peers() == 0; }, 10s));
  }
};

TEST_F(ListenerFixture, AsksAtEachRequestWhetherThePeerStillMay) {
  body = composeAnswer("one", JsonValue());
  const int fd = connectTo();
  ask(fd, "one");
  EXPECT_EQ(codeFor(fd, "one"), 0);
  mayAsk = false;
  ask(fd, "two");
  EXPECT_EQ(codeFor(fd, "two"), static_cast<int>(HelperErrorCode::notPermitted));
  waitUntilGone();
  close(fd);
}

TEST_F(ListenerFixture, StrangersTakeNoPlaceOfThoseWhoMayAsk) {
  body = composeAnswer("t", JsonValue());
  strangers = kPeersLimit + 10;
  std::vector<int> knocking;
  for (std::size_t i = 0; i < kPeersLimit + 10; ++i) knocking.push_back(connectTo());
  const int fd = connectTo();
  ask(fd, "t");
  EXPECT_EQ(codeFor(fd, "t"), 0) << "though all of them knocked in the same turn";
  EXPECT_EQ(listener->peers(), 1U);
  for (const int stranger : knocking) {
    EXPECT_EQ(codeFor(stranger, "t"), static_cast<int>(HelperErrorCode::notPermitted));
    close(stranger);
  }
  close(fd);
}

TEST_F(ListenerFixture, TellsOfAUserWhoMayNotAskOnceAMinute) {
  mayAsk = false;
  const auto knock = [&] {
    const int fd = connectTo();
    EXPECT_EQ(codeFor(fd, "t"), static_cast<int>(HelperErrorCode::notPermitted));
    waitUntilGone();
    close(fd);
  };
  for (int i = 0; i < 5; ++i) knock();
  EXPECT_EQ(log.count("Refused a peer of user"), 1U);
  machine.advance(kRefusalLogInterval);
  knock();
  EXPECT_EQ(log.count("Refused a peer of user"), 2U);
}

TEST_F(ListenerFixture, APeerWhoseAnswerIsDueIsNeverIdleWhateverElseWasAnsweredMeanwhile) {
  openWithIdleLimit(100ms);
  body = composeAnswer("status", JsonValue());
  const int fd = connectTo();
  hold = true;
  ask(fd, "run");
  EXPECT_TRUE(loop.pump([this] { return held.size() == 1; }, 10s));
  hold = false;
  ask(fd, "status");
  EXPECT_EQ(codeFor(fd, "status"), 0);
  pass(300ms);
  EXPECT_EQ(listener->peers(), 1U);
  held[0](composeAnswer("run", JsonValue()));
  EXPECT_EQ(codeFor(fd, "run"), 0);
  EXPECT_EQ(codeFor(fd, "next"), static_cast<int>(HelperErrorCode::idle)) << "now the limit counts";
  waitUntilGone();
  close(fd);
}

TEST_F(ListenerFixture, APeerThatTakesNoAnswersIsReadNoFurtherUntilItDoes) {
  constexpr std::size_t requests = 200;
  constexpr std::size_t size = 256U << 10U;  // more than a socket holds
  body = composeAnswer("t", JsonValue(std::string(size, 'x')));
  const int fd = connectTo();
  for (std::size_t i = 0; i < requests; ++i) ask(fd, "t");
  pass(200ms);
  EXPECT_EQ(handled, kUntakenAnswersLimit);

  std::size_t taken = 0;
  std::vector<char> buffer(1U << 20U);
  loop.pump(
      [&] {
        for (ssize_t got = 0; (got = recv(fd, buffer.data(), buffer.size(), 0)) > 0;)
          taken += static_cast<std::size_t>(got);
        return taken >= requests * encodeFrame(body).size();
      },
      10s);
  EXPECT_EQ(taken, requests * encodeFrame(body).size()) << "each is answered in the end";
  EXPECT_EQ(handled, requests);
  close(fd);
}

TEST_F(ListenerFixture, TheOldestAnswerThatIsNotTakenEndsTheConnectionWhileNewerOnesCome) {
  openWithIdleLimit(200ms);
  body = composeAnswer("t", JsonValue(std::string(1U << 20U, 'x')));
  const int fd = connectTo();
  ask(fd, "big");
  EXPECT_TRUE(loop.pump([this] { return handled == 1; }, 10s));
  hold = true;
  for (int i = 0; i < 10; ++i) ask(fd, "later");
  EXPECT_TRUE(loop.pump([this] { return held.size() == 10; }, 10s));
  for (auto& answer : held) {
    pass(50ms);
    answer(body);
  }
  EXPECT_EQ(listener->peers(), 0U);
  close(fd);
}

TEST_F(ListenerFixture, AnAnswerThatIsTooLargeIsRefusedUnderItsRequestsId) {
  body.assign(kAnswerFrameLimit + 1, ' ');
  const int fd = connectTo();
  ask(fd, "huge");
  EXPECT_EQ(codeFor(fd, "huge"), static_cast<int>(HelperErrorCode::tooLarge));
  close(fd);
}

TEST_F(ListenerFixture, IsFreeOnceItsProcessIsGoneThoughAForkedChildHasNotComeToItsExec) {
  const auto child = fork();
  if (child == 0) {
    pause();
    _exit(0);
  }
  EXPECT_NO_THROW(openWithIdleLimit(kPeerIdleLimit));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

}  // namespace
}  // namespace corvane
