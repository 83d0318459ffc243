#include "platform/uv/uv_helper_channel.h"

#include <uv.h>

#include <array>
#include <optional>
#include <utility>

#include "base/frame.h"
#include "platform/uv/socket_address.h"

namespace corvane {

namespace {

Error channelError(int code, std::string text) {
  return {.domain = HelperChannelError::domain, .code = code, .text = std::move(text)};
}

}  // namespace

// One connection with its one request. It keeps itself alive until libuv has given up its handle.
class UvHelperChannel::Exchange : public std::enable_shared_from_this<Exchange> {
 public:
  Exchange(MainQueue& main, std::shared_ptr<Exchanges> others, std::string body, Completion<Result<std::string>> done)
      : main_(main), others_(std::move(others)), frame_(std::move(body)), done_(std::move(done)) {}
  ~Exchange() { done_.abandon(); }

  void start(uv_loop_t* loop, const std::filesystem::path& socket);
  void letGo() {
    done_.abandon();
    answer_ = std::unexpected(channelError(HelperChannelError::hungUp, ""));
    close();
  }

 private:
  void connected(int code);
  void received(std::string_view bytes);
  void fail(int code, std::string text) { finish(std::unexpected(channelError(code, std::move(text)))); }
  void finish(Result<std::string> answer);
  void close();

  MainQueue& main_;
  std::shared_ptr<Exchanges> others_;
  std::string frame_;  // the body until the connection stands
  Completion<Result<std::string>> done_;
  std::optional<Result<std::string>> answer_;
  FrameDecoder decoder_{kAnswerFrameLimit};
  std::array<char, 64 * 1024> buffer_;
  uv_pipe_t pipe_;
  uv_connect_t connect_;
  uv_write_t write_;
  std::shared_ptr<Exchange> self_;
};

void UvHelperChannel::Exchange::start(uv_loop_t* loop, const std::filesystem::path& socket) {
  if (frame_.size() > kRequestFrameLimit)
    return fail(HelperChannelError::requestTooLong,
                "The request is too long for the helper (" + std::to_string(frame_.size()) + " bytes).");
  const auto address = SocketAddress::of(socket);
  if (!address) return fail(HelperChannelError::unreachable, address.error().text);
  uv_pipe_init(loop, &pipe_, 0);
  pipe_.data = this;
  connect_.data = this;
  self_ = shared_from_this();
  others_->insert(this);
  uv_pipe_connect(&connect_, &pipe_, address->text().c_str(),
                  [](uv_connect_t* request, int code) { static_cast<Exchange*>(request->data)->connected(code); });
}

void UvHelperChannel::Exchange::connected(int code) {
  if (answer_) return;
  if (code != 0)
    return fail(HelperChannelError::unreachable, std::string("The helper cannot be reached: ") + uv_strerror(code));
  frame_ = encodeFrame(frame_);
  const auto buffer = uv_buf_init(frame_.data(), static_cast<unsigned int>(frame_.size()));
  auto* stream = reinterpret_cast<uv_stream_t*>(&pipe_);
  // A helper that refuses a request answers before it has read all of it, so a failed write is no end yet:
  // reading tells.
  uv_write(&write_, stream, &buffer, 1, [](uv_write_t*, int) {});
  uv_read_start(
      stream,
      [](uv_handle_t* handle, std::size_t, uv_buf_t* room) {
        auto& bytes = static_cast<Exchange*>(handle->data)->buffer_;
        *room = uv_buf_init(bytes.data(), static_cast<unsigned int>(bytes.size()));
      },
      [](uv_stream_t* pipe, ssize_t count, const uv_buf_t* room) {
        auto* exchange = static_cast<Exchange*>(pipe->data);
        if (count > 0) exchange->received({room->base, static_cast<std::size_t>(count)});
        if (count < 0) exchange->fail(HelperChannelError::hungUp, "The helper ended the connection without an answer.");
      });
}

void UvHelperChannel::Exchange::received(std::string_view bytes) {
  if (const auto fed = decoder_.feed(bytes); !fed)
    return fail(HelperChannelError::answerTooLong, "The helper's answer is too long: " + fed.error().text + ".");
  if (auto body = decoder_.next()) finish(std::move(*body));
}

void UvHelperChannel::Exchange::finish(Result<std::string> answer) {
  if (answer_) return;
  answer_ = std::move(answer);
  close();
  main_.post([exchange = shared_from_this()] {
    if (exchange->done_) std::exchange(exchange->done_, {})(std::move(*exchange->answer_));
  });
}

void UvHelperChannel::Exchange::close() {
  if (!self_ || uv_is_closing(reinterpret_cast<uv_handle_t*>(&pipe_)) != 0) return;
  uv_close(reinterpret_cast<uv_handle_t*>(&pipe_), [](uv_handle_t* handle) {
    auto* exchange = static_cast<Exchange*>(handle->data);
    exchange->others_->erase(exchange);
    exchange->self_.reset();
  });
}

UvHelperChannel::UvHelperChannel(uv_loop_s* loop, MainQueue& main, std::filesystem::path socket)
    : loop_(loop), main_(main), socket_(std::move(socket)), exchanges_(std::make_shared<Exchanges>()) {}

UvHelperChannel::~UvHelperChannel() {
  for (auto* exchange : Exchanges(*exchanges_)) exchange->letGo();
}

void UvHelperChannel::request(std::string body, Completion<Result<std::string>> done) {
  std::make_shared<Exchange>(main_, exchanges_, std::move(body), std::move(done))->start(loop_, socket_);
}

}  // namespace corvane
