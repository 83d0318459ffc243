// One request on its way, over all redirects, as libcurl sees it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/task.h"
#include "platform/http_client.h"
#include "platform/net/curl_library.h"
#include "platform/net/new_file.h"
#include "platform/net/web_address.h"

namespace corvane {

// Main thread. Holds no connection to a loop: its owner hands the handle to libcurl and tells it when that is done.
class WebTransfer {
 public:
  // Where a body goes beside the answer.
  struct Download {
    std::filesystem::path file;
    std::uint64_t sizeLimit = 0;
  };

  WebTransfer(const CurlLibrary& curl, HttpRequest request, std::optional<Download> download, const std::string& agent);
  ~WebTransfer();
  WebTransfer(const WebTransfer&) = delete;
  WebTransfer& operator=(const WebTransfer&) = delete;

  // Checks all and makes the handle ready. Once.
  [[nodiscard]] Status prepare();
  [[nodiscard]] CURL* handle() const { return handle_; }
  // What is said of it in errors: the server's name, or that the address has none.
  [[nodiscard]] std::string server() const;

  // After the handle was done, and was taken from libcurl. Absent: it is redirected, and goes on with the same handle.
  [[nodiscard]] std::optional<Result<HttpAnswer>> ended(CURLcode code);

 private:
  [[nodiscard]] Status setHeaders(const std::vector<std::pair<std::string, std::string>>& headers);
  [[nodiscard]] Status aim(const std::string& url);
  [[nodiscard]] Status follow(const std::string& url);
  [[nodiscard]] int status() const;
  [[nodiscard]] bool isRedirect() const;
  bool heardHeader(std::string_view line);
  bool heardBody(std::string_view bytes);

  template <class Value>
  void set(CURLoption option, Value value) {
    curl_.easySetopt(handle_, option, value);
  }

  const CurlLibrary& curl_;
  HttpRequest request_;
  std::optional<Download> download_;
  std::string agent_;
  CURL* handle_;
  curl_slist* headers_ = nullptr;
  std::optional<WebAddress> address_;
  std::optional<NewFile> file_;
  HttpAnswer answer_;
  std::uint64_t received_ = 0;
  std::size_t headerBytes_ = 0;
  int redirects_ = 0;
  std::optional<Error> problem_;  // why a callback ended the transfer
};

}  // namespace corvane
