// The real daemon at each of its limits and one past it, and in front of a user who may not ask.
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/fanotify.h>

#include "helper/helper_connection.h"
#include "helper/helper_listener.h"
#include "helper/helper_process.h"
#include "helper/run_queue.h"

namespace corvane {
namespace {

constexpr uid_t kNobody = 65534;

struct HelperLimits : HelperProcess {
  static void sendAll(int fd, const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const auto count = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return;
      sent += static_cast<std::size_t>(count);
    }
  }
  static void sendRequest(int fd, const std::string& id, HelperQuestion question) {
    sendAll(fd, encodeFrame(composeRequest({.id = id, .question = std::move(question)})));
  }
  static int codeOf(const std::optional<std::string>& answer, const std::string& id) {
    if (!answer) return -1;
    const auto parsed = parseAnswer(*answer, id);
    return parsed ? 0 : parsed.error().code;
  }
  static bool hasEnded(int fd) {
    char rest = 0;
    return recv(fd, &rest, 1, 0) <= 0;
  }
};

TEST_F(HelperLimits, TakesSixtyFourPeersAndTurnsTheNextAway) {
  std::vector<int> peers;
  for (std::size_t i = 0; i < kPeersLimit; ++i) peers.push_back(connectTo());
  sendRequest(peers.back(), "t", ask::Status{});
  EXPECT_EQ(codeOf(receive(peers.back()), "t"), 0) << "the last that is taken";
  const int tooMany = connectTo();
  EXPECT_EQ(codeOf(receive(tooMany), "t"), static_cast<int>(HelperErrorCode::tooManyPeers));
  EXPECT_TRUE(hasEnded(tooMany));
  for (const int fd : peers) close(fd);
  close(tooMany);
  EXPECT_TRUE(testing::eventually([&] { return ask(ask::Status{}).has_value(); })) << "places come free";
}

TEST_F(HelperLimits, QueuesEightRunsBehindTheOneInHand) {
  const int fd = connectTo();
  for (std::size_t i = 0; i <= kWaitingRunsLimit; ++i)
    sendRequest(fd, "run" + std::to_string(i), ask::StartPatching{.labels = {Label("slow")}, .alsoStageLabels = {}});
  sendRequest(fd, "status", ask::Status{});
  EXPECT_EQ(codeOf(receive(fd), "status"), 0) << "all of them were taken";
  sendRequest(fd, "tooMany", ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}});
  EXPECT_EQ(codeOf(receive(fd), "tooMany"), static_cast<int>(HelperErrorCode::busy));
  sendRequest(fd, "status", ask::Status{});
  EXPECT_EQ(codeOf(receive(fd), "status"), 0) << "the connection goes on";
  kill(pid_, SIGTERM);
  for (std::size_t i = 0; i <= kWaitingRunsLimit; ++i) EXPECT_TRUE(receive(fd)) << "each hears of the end";
  close(fd);
}

TEST_F(HelperLimits, LetsSixteenRequestsOfAConnectionWait) {
  writeLabel("quill", "Quill", "appNewVersion=$(sleep 10; echo 2.0)");
  const int fd = connectTo();
  const auto check = ask::DiscoverForLabels{.labels = {Label("quill")}, .includeLatestVersions = true};
  for (std::size_t i = 0; i < kPeerRequestsLimit; ++i) sendRequest(fd, "check" + std::to_string(i), check);
  EXPECT_TRUE(ask(ask::Status{})) << "another connection is not concerned";
  sendRequest(fd, "tooMany", ask::Status{});
  EXPECT_EQ(codeOf(receive(fd), "tooMany"), static_cast<int>(HelperErrorCode::busy));
  EXPECT_TRUE(hasEnded(fd));
  close(fd);
  end(SIGTERM);  // takes the children with it
}

TEST_F(HelperLimits, MeasuresFramesListsAndNames) {
  const auto scoped = [](std::size_t count, std::size_t length) {
    Labels labels;
    for (std::size_t i = 0; i < count; ++i) {
      auto text = std::to_string(i);
      text.insert(0, length > text.size() ? length - text.size() : 0, 'x');
      labels.emplace_back(text);
    }
    return composeRequest({.id = "t", .question = ask::DiscoverForLabels{.labels = labels}});
  };
  const auto padded = [](std::size_t size) {
    auto body = composeRequest({.id = "t", .question = ask::Status{}});
    return body.insert(0, size - body.size(), ' ');
  };
  const auto named = [](std::size_t length) {
    return R"({"version":1,"id":")" + std::string(length, 'i') + R"(","op":"status"})";
  };
  const struct {
    const char* what;
    std::string body;
    HelperErrorCode code;
    std::string id = "t";
  } rows[] = {
      {"a frame at the limit", padded(kRequestFrameLimit), {}},
      {"a frame one past it", padded(kRequestFrameLimit + 1), HelperErrorCode::tooLarge},
      {"labels at the limit", scoped(kHelperLabelsLimit, 4), {}},
      {"labels one past it", scoped(kHelperLabelsLimit + 1, 4), HelperErrorCode::tooLarge},
      {"a label at the limit", scoped(1, kHelperLabelLengthLimit), {}},
      {"a label one past it", scoped(1, kHelperLabelLengthLimit + 1), HelperErrorCode::tooLarge},
      {"an id at the limit", named(kHelperIdLengthLimit), {}, std::string(kHelperIdLengthLimit, 'i')},
      {"an id one past it", named(kHelperIdLengthLimit + 1), HelperErrorCode::malformed},
  };
  for (const auto& row : rows) {
    const int fd = connectTo();
    sendAll(fd, encodeFrame(row.body));
    EXPECT_EQ(codeOf(receive(fd), row.id), static_cast<int>(row.code)) << row.what;
    if (row.code != HelperErrorCode{}) {
      EXPECT_TRUE(hasEnded(fd)) << row.what;
    }
    close(fd);
  }
}

TEST_F(HelperLimits, RefusesAStrangerBeforeTheFirstByte) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can play somebody else";
  const pid_t stranger = fork();
  ASSERT_GE(stranger, 0);
  if (stranger == 0) {
    if (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(100);
    _exit(codeOf(receive(connectTo()), "t"));  // nothing was asked yet
  }
  int status = 0;
  ASSERT_EQ(waitpid(stranger, &status, 0), stranger);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), static_cast<int>(HelperErrorCode::notPermitted));
  EXPECT_NE(log().find("Refused a peer of user 65534."), std::string::npos);
  EXPECT_TRUE(ask(ask::Status{}));
}

// The kernel asks us before it opens a label's file, and is not answered: so hangs a volume that has gone.
TEST_F(HelperLimits, EndsInGoodOrderThoughItsScansHang) {
  const int guard = fanotify_init(FAN_CLASS_CONTENT | FAN_CLOEXEC | FAN_NONBLOCK, O_RDONLY);
  if (guard < 0) GTEST_SKIP() << "only root can hold up an open";
  const auto file = places_.labelsFolder() / "quill.sh";
  ASSERT_EQ(fanotify_mark(guard, FAN_MARK_ADD, FAN_OPEN_PERM, AT_FDCWD, file.c_str()), 0);
  const int client = connectTo();
  sendRequest(client, "discovery", ask::DiscoverInstalled{});
  sendRequest(client, "run", ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}});
  pollfd asked{.fd = guard, .events = POLLIN, .revents = 0};
  ASSERT_EQ(poll(&asked, 1, 10'000), 1) << "the scan has come to that file";
  EXPECT_TRUE(ask(ask::Status{}));

  kill(pid_, SIGTERM);
  std::map<std::string, bool> stopped;
  for (int i = 0; i < 2; ++i) {
    const auto answer = receive(client);
    for (const char* id : {"discovery", "run"})
      if (codeOf(answer, id) == static_cast<int>(HelperErrorCode::stopping)) stopped[id] = true;
  }
  EXPECT_EQ(stopped.size(), 2U);
  int status = -1;
  const bool ended = testing::eventually([&] { return waitpid(pid_, &status, WNOHANG) == pid_; });
  EXPECT_TRUE(ended);
  if (ended) pid_ = -1;
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_NE(log().find("Ended."), std::string::npos);
  EXPECT_EQ(log().find("cut short"), std::string::npos);
  close(guard);
  close(client);
}

}  // namespace
}  // namespace corvane
