#include "platform/net/web_transfer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.h"
#include "platform/net/curl_http_client.h"

namespace corvane {

namespace {

constexpr std::size_t kHeadersLimit = 256U << 10U;  // of one answer
constexpr const char* kProtocols = "http,https";

Error httpError(int code, std::string text) {
  return {.domain = HttpError::domain, .code = code, .text = std::move(text)};
}

bool isTokenLetter(char letter) {
  constexpr std::string_view kOthers = "!#$%&'*+-.^_`|~";
  return (letter >= '0' && letter <= '9') || (lowered(letter) >= 'a' && lowered(letter) <= 'z') ||
         kOthers.find(letter) != std::string_view::npos;
}

// A line break in either would begin another header.
bool canBeSent(const std::string& name, const std::string& value) {
  return !name.empty() && std::ranges::all_of(name, isTokenLetter) &&
         std::ranges::none_of(value, [](char letter) { return letter == '\r' || letter == '\n' || letter == '\0'; });
}

}  // namespace

WebTransfer::WebTransfer(const CurlLibrary& curl, HttpRequest request, std::optional<Download> download,
                         const std::string& agent)
    : curl_(curl),
      request_(std::move(request)),
      download_(std::move(download)),
      agent_(agent),
      handle_(curl.easyInit()) {}

WebTransfer::~WebTransfer() {
  if (handle_ != nullptr) curl_.easyCleanup(handle_);
  curl_.slistFreeAll(headers_);
}

std::string WebTransfer::server() const {
  return address_ ? "The server " + address_->host : "The address of the request";
}

Status WebTransfer::prepare() {
  if (handle_ == nullptr) return std::unexpected(httpError(HttpError::noAnswer, "There is no memory for the request."));
  if (auto aimed = aim(request_.url); !aimed) return aimed;
  if (auto given = setHeaders(request_.headers); !given) return given;
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_PROTOCOLS_STR, kProtocols);
  set(CURLOPT_FOLLOWLOCATION, 0L);  // libcurl would show our headers to any server
  set(CURLOPT_FORBID_REUSE, 1L);    // requests are hours apart
  set(CURLOPT_QUICK_EXIT, 1L);      // else giving up would wait for the names to be looked up
  set(CURLOPT_CONNECTTIMEOUT_MS, std::max(1L, static_cast<long>(request_.timeLimit / 1ms)));
  set(CURLOPT_USERAGENT, agent_.c_str());
  if (request_.body) {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDS, request_.body->data());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body->size()));
  }
  set(CURLOPT_HEADERDATA, this);
  set(CURLOPT_HEADERFUNCTION, static_cast<curl_write_callback>([](char* bytes, size_t size, size_t count, void* self) {
        const bool goesOn = static_cast<WebTransfer*>(self)->heardHeader({bytes, size * count});
        return goesOn ? size * count : 0;
      }));
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_WRITEFUNCTION, static_cast<curl_write_callback>([](char* bytes, size_t size, size_t count, void* self) {
        const bool goesOn = static_cast<WebTransfer*>(self)->heardBody({bytes, size * count});
        return goesOn ? size * count : 0;
      }));
  if (!download_) return {};
  auto file = NewFile::create(download_->file);
  if (!file) return std::unexpected(httpError(HttpError::file, file.error().text));
  file_.emplace(std::move(*file));
  return {};
}

Status WebTransfer::setHeaders(const std::vector<std::pair<std::string, std::string>>& headers) {
  curl_.slistFreeAll(headers_);
  headers_ = curl_.slistAppend(nullptr, "Expect:");  // nobody here waits for leave to send
  for (const auto& [name, value] : headers) {
    if (!canBeSent(name, value))
      return std::unexpected(httpError(HttpError::badRequest, "A header of the request cannot be sent."));
    headers_ = curl_.slistAppend(headers_, (trimmed(value).empty() ? name + ";" : name + ": " + value).c_str());
  }
  set(CURLOPT_HTTPHEADER, headers_);
  return {};
}

Status WebTransfer::aim(const std::string& url) {
  address_ = WebAddress::of(curl_, url);
  if (!address_)
    return std::unexpected(httpError(HttpError::badRequest, "The address of the request is no web server's."));
  set(CURLOPT_URL, url.c_str());
  return {};
}

int WebTransfer::status() const {
  long status = 0;
  curl_.easyGetinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
  return static_cast<int>(status);
}

bool WebTransfer::isRedirect() const {
  constexpr std::array<int, 5> kRedirects{301, 302, 303, 307, 308};
  return std::ranges::find(kRedirects, status()) != kRedirects.end() &&
         std::ranges::find(answer_.headers, "location", &std::pair<std::string, std::string>::first) !=
             answer_.headers.end();
}

bool WebTransfer::heardHeader(std::string_view line) {
  if (line.starts_with("HTTP/")) {
    // Also behind one that only announced this.
    answer_ = {};
    headerBytes_ = 0;
  }
  headerBytes_ += line.size();
  if (headerBytes_ > kHeadersLimit) {
    problem_ = httpError(HttpError::tooLarge, server() + " answers with too many headers.");
    return false;
  }
  const auto colon = line.find(':');
  if (colon == std::string_view::npos || line.starts_with("HTTP/")) return true;
  answer_.headers.emplace_back(lowercased(std::string(trimmed(line.substr(0, colon)))),
                               std::string(trimmed(line.substr(colon + 1))));
  return true;
}

bool WebTransfer::heardBody(std::string_view bytes) {
  if (isRedirect()) return true;
  const bool intoFile = file_ && status() / 100 == 2;
  received_ += bytes.size();
  if (received_ > (intoFile ? download_->sizeLimit : kHttpBodyLimit)) {
    problem_ = httpError(HttpError::tooLarge, server() + " answers with more than can be taken.");
    return false;
  }
  if (!intoFile) {
    answer_.body += bytes;
    return true;
  }
  const auto written = file_->write(bytes);
  if (!written) problem_ = httpError(HttpError::file, written.error().text);
  return written.has_value();
}

std::optional<Result<HttpAnswer>> WebTransfer::ended(CURLcode code) {
  if (problem_) return std::unexpected(*problem_);
  if (code != CURLE_OK)
    return std::unexpected(
        httpError(HttpError::noAnswer, server() + " gives no answer: " + curl_.easyStrerror(code) + "."));
  if (isRedirect()) {
    char* url = nullptr;
    curl_.easyGetinfo(handle_, CURLINFO_REDIRECT_URL, &url);
    if (auto followed = follow(url == nullptr ? std::string() : std::string(url)); !followed)
      return std::unexpected(followed.error());
    return std::nullopt;
  }
  answer_.status = status();
  answer_.redirectedTo = redirectedTo_;
  if (file_ && answer_.status / 100 == 2) {
    if (const auto kept = file_->keep(); !kept) return std::unexpected(httpError(HttpError::file, kept.error().text));
  }
  file_.reset();
  return std::move(answer_);
}

Status WebTransfer::follow(const std::string& url) {
  const auto before = *address_;
  const auto refused = [&](const char* where) {
    return std::unexpected(
        httpError(HttpError::badRedirect, "The server " + before.host + " redirects " + where + "."));
  };
  if (++redirects_ > kHttpRedirectsAtMost) return refused("too many times");
  const auto next = WebAddress::of(curl_, url);
  if (!next) return refused("to what is no web server");
  if (before.scheme == "https" && next->scheme != "https") return refused("to a server that cannot be trusted");
  const int code = status();
  if (request_.body && code != 307 && code != 308) {
    request_.body.reset();
    set(CURLOPT_POSTFIELDS, static_cast<const char*>(nullptr));
    set(CURLOPT_HTTPGET, 1L);
  }
  if (*next != before) {
    // A header that names the kind of body goes with the body.
    std::erase_if(request_.headers, [&](const auto& header) {
      return !request_.body || !equalIgnoringCase(header.first, "content-type");
    });
  }
  if (auto given = setHeaders(request_.headers); !given) return given;
  answer_ = {};
  received_ = 0;
  redirectedTo_ = url;
  return aim(url);
}

}  // namespace corvane
