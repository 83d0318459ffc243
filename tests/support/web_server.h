// A web server of a test's own, on the loopback interface.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace corvane::testing {

struct WebRequest {
  std::string line;                            // "GET /path HTTP/1.1"
  std::map<std::string, std::string> headers;  // names as sent
  std::string body;
};

// Takes one request after the other, on a thread of its own. A page is the whole answer as it goes over the wire; for
// an address without one nothing is ever said.
class WebServer {
 public:
  WebServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener_, 128) != 0) return;
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ::ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  ~WebServer() {
    ::shutdown(listener_, SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    for (const int connection : silent_) ::close(connection);
    ::close(listener_);
  }
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  [[nodiscard]] std::string url(const std::string& path, const std::string& host = "127.0.0.1") const {
    return "http://" + host + ":" + std::to_string(port_) + path;
  }
  void page(const std::string& path, std::string answer) {
    const std::scoped_lock lock(mutex_);
    pages_[path] = std::move(answer);
  }
  static std::string answer(const std::string& status, const std::string& body, const std::string& headers = "") {
    return "HTTP/1.1 " + status + "\r\n" + headers + "Content-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
  }
  static std::string redirect(const std::string& status, const std::string& to) {
    return answer(status, "moved", "Location: " + to + "\r\n");
  }
  [[nodiscard]] std::vector<WebRequest> requests() const {
    const std::scoped_lock lock(mutex_);
    return requests_;
  }

 private:
  void serve() {
    while (true) {
      const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (connection < 0) return;
      const auto page = pageFor(connection);
      if (!page) {
        silent_.push_back(connection);
        continue;
      }
      for (std::size_t sent = 0; sent < page->size();) {
        const auto count = ::send(connection, page->data() + sent, page->size() - sent, MSG_NOSIGNAL);
        if (count <= 0) break;
        sent += static_cast<std::size_t>(count);
      }
      ::close(connection);
    }
  }

  std::optional<std::string> pageFor(int connection) {
    std::string bytes;
    char room[4096];
    const auto more = [&] {
      const auto count = ::recv(connection, room, sizeof room, 0);
      if (count > 0) bytes.append(room, static_cast<std::size_t>(count));
      return count > 0;
    };
    while (bytes.find("\r\n\r\n") == std::string::npos)
      if (!more()) return "";
    const auto headEnd = bytes.find("\r\n\r\n");
    WebRequest request;
    for (std::size_t at = 0; at <= headEnd;) {
      const auto end = bytes.find("\r\n", at);
      const auto line = bytes.substr(at, end - at);
      const auto colon = line.find(": ");
      if (at == 0)
        request.line = line;
      else if (colon != std::string::npos)
        request.headers[line.substr(0, colon)] = line.substr(colon + 2);
      at = end + 2;
    }
    const auto length = request.headers.find("Content-Length");
    const auto size = length == request.headers.end() ? 0 : std::stoul(length->second);
    while (bytes.size() < headEnd + 4 + size)
      if (!more()) return "";
    request.body = bytes.substr(headEnd + 4, size);
    const auto begin = request.line.find(' ') + 1;
    const auto path = request.line.substr(begin, request.line.rfind(' ') - begin);
    const std::scoped_lock lock(mutex_);
    requests_.push_back(std::move(request));
    const auto found = pages_.find(path);
    return found == pages_.end() ? std::nullopt : std::optional(found->second);
  }

  int listener_;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::map<std::string, std::string> pages_;
  std::vector<WebRequest> requests_;
  std::vector<int> silent_;
  std::thread thread_;
};

}  // namespace corvane::testing
