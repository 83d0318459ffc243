// Documents over HTTP by libcurl, on a libuv loop.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "base/main_queue.h"
#include "platform/http_client.h"

struct uv_loop_s;

namespace corvane {

inline constexpr int kHttpRedirectsAtMost = 10;

// What can go wrong; codes in the domain "CRVHttp".
struct HttpError {
  static constexpr const char* domain = "CRVHttp";
  static constexpr int noAnswer = 1;     // none in time, none that is whole, or the server cannot be reached or trusted
  static constexpr int tooLarge = 2;     // the body or the headers
  static constexpr int badRequest = 3;   // no address of a web server, or headers that cannot be sent
  static constexpr int badRedirect = 4;  // to what is no web server, from https to http, or one too many
  static constexpr int file = 5;         // that is to be downloaded into
  static constexpr int noLibrary = 6;    // libcurl is not installed
};

// Main thread; opening and reading never wait. Only http and https. What was meant for one server (scheme, host, port)
// is not shown to another to which it redirects, the body of a POST excepted that is told to be sent again. The proxies
// of the environment are used. A downloaded file is readable by its owner only. When this dies, open requests are given
// up and their files removed; the loop must outlive it.
class CurlHttpClient final : public HttpClient {
 public:
  // `agent` is how requests name the program, unless a request names it otherwise.
  CurlHttpClient(uv_loop_s* loop, MainQueue& main, std::string agent = "Corvane");
  ~CurlHttpClient() override;
  CurlHttpClient(const CurlHttpClient&) = delete;
  CurlHttpClient& operator=(const CurlHttpClient&) = delete;

  void send(HttpRequest request, Completion<Result<HttpAnswer>> done) override;
  void download(HttpRequest request, std::filesystem::path file, std::uint64_t sizeLimit,
                Completion<Result<HttpAnswer>> done) override;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane
