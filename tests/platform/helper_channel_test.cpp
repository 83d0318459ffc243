#include "platform/uv/uv_helper_channel.h"

#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "base/frame.h"
#include "platform/scripted/scripted_helper_channel.h"
#include "platform/scripted/virtual_time.h"
#include "platform/uv/socket_address.h"
#include "support/real_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "support/unix_socket.h"

namespace corvane::testing {

namespace {

// A helper of one connection: reads a frame, sends what it was told to, byte by piece, and hangs up.
class OneAnswerServer {
 public:
  OneAnswerServer(const std::filesystem::path& path, std::string bytes) : bytes_(std::move(bytes)) {
    listener_ = unixSocket(SocketAddress::of(path)->text(), ::bind);
    EXPECT_EQ(::listen(listener_, 4), 0);
    thread_ = std::jthread([this] { serve(); });
  }
  ~OneAnswerServer() {
    ::shutdown(listener_, SHUT_RDWR);
    thread_ = {};
    ::close(listener_);
  }
  std::string received() {
    if (thread_.joinable()) thread_.join();
    return received_;
  }

 private:
  void serve() {
    const int peer = ::accept(listener_, nullptr, nullptr);
    if (peer < 0) return;
    FrameDecoder decoder(kRequestFrameLimit);
    std::string block(4096, '\0');
    for (auto body = decoder.next(); !body; body = decoder.next()) {
      const auto got = ::read(peer, block.data(), block.size());
      if (got <= 0) break;
      if (!decoder.feed(std::string_view(block).substr(0, static_cast<std::size_t>(got)))) break;
      if (auto whole = decoder.next()) {
        received_ = *whole;
        break;
      }
    }
    for (std::size_t i = 0; i < bytes_.size(); i += 7) {
      const auto piece = std::string_view(bytes_).substr(i, 7);
      if (::send(peer, piece.data(), piece.size(), MSG_NOSIGNAL) < 0) break;
    }
    ::close(peer);
  }

  std::string bytes_;
  std::string received_;
  int listener_ = -1;
  std::jthread thread_;
};

}  // namespace

struct UvHelperChannelTest : ::testing::Test {
  Result<std::string> ask(std::string body) {
    UvHelperChannel channel(loop_.loop(), loop_.mainQueue(), socket_);
    std::optional<Result<std::string>> answer;
    channel.request(std::move(body), [&](Result<std::string> got) { answer = std::move(got); });
    EXPECT_FALSE(answer.has_value()) << "never within the request";
    EXPECT_TRUE(loop_.pump([&] { return answer.has_value(); }, 30s));
    return std::move(answer).value_or(failure("test", 0, "no answer"));
  }

  RealLoop loop_;
  TemporaryFolder folder_;
  std::filesystem::path socket_ = folder_.path() / "helper.sock";
};

TEST_F(UvHelperChannelTest, ARequestIsAnsweredWholeHoweverItComes) {
  const std::string large(200'000, 'r');
  OneAnswerServer server(socket_, encodeFrame("the answer"));
  EXPECT_EQ(ask(large).value(), "the answer");
  EXPECT_EQ(server.received(), large);
}

TEST_F(UvHelperChannelTest, SocketsMayLieDeep) {
  socket_ = folder_.path() / std::string(90, 'a') / std::string(90, 'b') / "helper.sock";
  std::filesystem::create_directories(socket_.parent_path());
  OneAnswerServer server(socket_, encodeFrame("deep"));
  EXPECT_EQ(ask("{}").value(), "deep");
}

TEST_F(UvHelperChannelTest, FailuresOfTheRoadAreTyped) {
  EXPECT_EQ(ask("{}").error().code, HelperChannelError::unreachable) << "no socket";
  EXPECT_EQ(ask("{}").error().domain, HelperChannelError::domain);
  folder_.write("helper.sock", "");
  EXPECT_EQ(ask("{}").error().code, HelperChannelError::unreachable) << "a plain file";
  EXPECT_EQ(ask(std::string(kRequestFrameLimit + 1, 'x')).error().code, HelperChannelError::requestTooLong);

  const std::pair<std::string, int> rows[] = {
      {"", HelperChannelError::hungUp},
      {encodeFrame("torn").substr(0, 6), HelperChannelError::hungUp},
      {std::string("\xFF\xFF\xFF\xFF", 4), HelperChannelError::answerTooLong},
  };
  for (const auto& [bytes, code] : rows) {
    std::filesystem::remove(socket_);
    OneAnswerServer server(socket_, bytes);
    EXPECT_EQ(ask("{}").error().code, code);
  }
}

TEST_F(UvHelperChannelTest, AChannelMayDieWithRequestsOpen) {
  OneAnswerServer server(socket_, encodeFrame("late"));
  {
    UvHelperChannel channel(loop_.loop(), loop_.mainQueue(), socket_);
    channel.request("{}", [](Result<std::string>) { FAIL() << "nobody is left to hear"; });
    loop_.turn();
  }
  loop_.turn();
}

}  // namespace corvane::testing
