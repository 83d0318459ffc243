#include "platform/net/curl_http_client.h"

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "base/lifeline.h"
#include "platform/net/web_transfer.h"
#include "platform/uv/uv_descriptor.h"

namespace corvane {

class CurlHttpClient::Impl {
 public:
  Impl(uv_loop_s* loop, MainQueue& main, std::string agent) : loop_(loop), main_(main), agent_(std::move(agent)) {}
  ~Impl() {
    for (auto& [number, open] : open_) {
      leave(open);
      open.done.abandon();
    }
    open_.clear();
    if (multi_ != nullptr) curl_->multiCleanup(multi_);
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void start(HttpRequest request, std::optional<WebTransfer::Download> download, Completion<Result<HttpAnswer>> done) {
    const auto number = ++last_;
    auto& open = open_[number];
    open.done = std::move(done);
    if (!ready())
      return end(number, failure(HttpError::domain, HttpError::noLibrary, "The library libcurl is not installed."));
    open.limit = main_.after(request.timeLimit, [this, number] {
      auto& late = open_.at(number);
      late.answer =
          failure(HttpError::domain, HttpError::noAnswer, late.transfer->server() + " gives no answer in time.");
      deliver(number);
    });
    open.transfer = std::make_unique<WebTransfer>(*curl_, std::move(request), std::move(download), agent_);
    if (auto prepared = open.transfer->prepare(); !prepared) return end(number, std::unexpected(prepared.error()));
    join(number, open);
  }

 private:
  struct Open {
    Completion<Result<HttpAnswer>> done;
    Lease limit;
    std::unique_ptr<WebTransfer> transfer;
    bool isWithCurl = false;
    std::optional<Result<HttpAnswer>> answer;
  };
  struct Socket {
    std::unique_ptr<UvDescriptor> descriptor;
    DescriptorEvents wanted = DescriptorEvents::none;
  };

  bool ready() {
    if (multi_ != nullptr) return true;
    curl_ = CurlLibrary::load();
    if (curl_ == nullptr) return false;
    multi_ = curl_->multiInit();
    if (multi_ == nullptr) return false;
    curl_->multiSetopt(multi_, CURLMOPT_SOCKETDATA, this);
    curl_->multiSetopt(multi_, CURLMOPT_SOCKETFUNCTION,
                       static_cast<curl_socket_callback>([](CURL*, curl_socket_t socket, int what, void* self, void*) {
                         static_cast<Impl*>(self)->awaitSocket(socket, what);
                         return 0;
                       }));
    curl_->multiSetopt(multi_, CURLMOPT_TIMERDATA, this);
    curl_->multiSetopt(multi_, CURLMOPT_TIMERFUNCTION,
                       static_cast<curl_multi_timer_callback>([](CURLM*, long milliseconds, void* self) {
                         static_cast<Impl*>(self)->awaitTime(milliseconds);
                         return 0;
                       }));
    return true;
  }

  void join(std::uint64_t number, Open& open) {
    open.isWithCurl = curl_->multiAddHandle(multi_, open.transfer->handle()) == CURLM_OK;
    if (!open.isWithCurl) end(number, open.transfer->ended(CURLE_FAILED_INIT).value());
  }
  void leave(Open& open) {
    if (std::exchange(open.isWithCurl, false)) curl_->multiRemoveHandle(multi_, open.transfer->handle());
  }

  void awaitSocket(curl_socket_t socket, int what) {
    if (what == CURL_POLL_REMOVE) return static_cast<void>(sockets_.erase(socket));
    auto& awaited = sockets_[socket];
    if (!awaited.descriptor)
      awaited.descriptor = std::make_unique<UvDescriptor>(
          loop_, socket, [this, socket](DescriptorEvents events) { act(socket, events); });
    awaited.wanted = what == CURL_POLL_IN    ? DescriptorEvents::readable
                     : what == CURL_POLL_OUT ? DescriptorEvents::writable
                                             : DescriptorEvents::both;
    awaited.descriptor->await(awaited.wanted);
  }

  void awaitTime(long milliseconds) {
    timer_.release();
    if (milliseconds < 0) return;
    timer_ = main_.after(std::chrono::milliseconds(milliseconds), [this] {
      int running = 0;
      curl_->multiSocketAction(multi_, CURL_SOCKET_TIMEOUT, 0, &running);
      collect();
    });
  }

  void act(curl_socket_t socket, DescriptorEvents events) {
    const int which = static_cast<int>(events);
    int running = 0;
    curl_->multiSocketAction(
        multi_, socket, ((which & 1) != 0 ? CURL_CSELECT_IN : 0) | ((which & 2) != 0 ? CURL_CSELECT_OUT : 0), &running);
    if (const auto found = sockets_.find(socket); found != sockets_.end())
      found->second.descriptor->await(found->second.wanted);
    collect();
  }

  void collect() {
    std::vector<std::pair<CURL*, CURLcode>> ended;
    int left = 0;
    while (const auto* message = curl_->multiInfoRead(multi_, &left))
      if (message->msg == CURLMSG_DONE) ended.emplace_back(message->easy_handle, message->data.result);
    for (const auto& [handle, code] : ended) {
      for (auto& [number, open] : open_) {
        if (!open.isWithCurl || open.transfer->handle() != handle) continue;
        leave(open);
        if (auto answer = open.transfer->ended(code))
          end(number, std::move(*answer));
        else
          join(number, open);
        break;
      }
    }
  }

  // In a later turn.
  void end(std::uint64_t number, Result<HttpAnswer> answer) {
    auto& open = open_.at(number);
    open.answer = std::move(answer);
    open.limit.release();
    main_.post(lifeline_.guard([this, number] { deliver(number); }));
  }

  void deliver(std::uint64_t number) {
    leave(open_.at(number));
    auto open = open_.extract(number);
    open.mapped().transfer.reset();  // a file that is not kept is gone when the answer is heard
    open.mapped().done(std::move(*open.mapped().answer));
  }

  uv_loop_s* loop_;
  MainQueue& main_;
  std::string agent_;
  const CurlLibrary* curl_ = nullptr;
  CURLM* multi_ = nullptr;
  std::map<curl_socket_t, Socket> sockets_;
  Lease timer_;
  std::uint64_t last_ = 0;
  std::map<std::uint64_t, Open> open_;
  Lifeline lifeline_;
};

CurlHttpClient::CurlHttpClient(uv_loop_s* loop, MainQueue& main, std::string agent)
    : impl_(std::make_unique<Impl>(loop, main, std::move(agent))) {}
CurlHttpClient::~CurlHttpClient() = default;

void CurlHttpClient::send(HttpRequest request, Completion<Result<HttpAnswer>> done) {
  impl_->start(std::move(request), std::nullopt, std::move(done));
}

void CurlHttpClient::download(HttpRequest request, std::filesystem::path file, std::uint64_t sizeLimit,
                              Completion<Result<HttpAnswer>> done) {
  impl_->start(std::move(request), WebTransfer::Download{.file = std::move(file), .sizeLimit = sizeLimit},
               std::move(done));
}

}  // namespace corvane
