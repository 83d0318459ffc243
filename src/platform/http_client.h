// Documents over HTTP. Follows redirects, keeps no cookies, stores nothing but what it was told to.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/date.h"
#include "base/error.h"
#include "base/task.h"

namespace corvane {

struct HttpRequest {
  std::string url;
  Duration timeLimit;  // for the whole of it
  std::vector<std::pair<std::string, std::string>> headers = {};
  std::optional<std::string> body = {};  // then it is a POST, else a GET
};

struct HttpAnswer {
  int status = 0;  // of the last answer behind redirects
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers = {};  // of that answer, names in lower case
  std::optional<std::string> redirectedTo = {};                   // whose answer it is, when not the address asked
  friend bool operator==(const HttpAnswer&, const HttpAnswer&) = default;
};

// A body above this size fails the request; that of a download has a limit of its own.
inline constexpr std::size_t kHttpBodyLimit = 4U << 20U;

// Main thread. Errors tell of the server by name, never of the path and query of an address, which may be secret.
class HttpClient {
 public:
  virtual ~HttpClient() = default;

  // `done` runs once in a later turn: with any answer whatever its status, or with an error when none came within the
  // time limit, for an address that is none, and without a network.
  virtual void send(HttpRequest request, Completion<Result<HttpAnswer>> done) = 0;

  // The same with the body of a 2xx answer in `file`, which is made anew; the body of any other stays in the answer. A
  // body above `sizeLimit` bytes fails. A download that failed leaves no file.
  virtual void download(HttpRequest request, std::filesystem::path file, std::uint64_t sizeLimit,
                        Completion<Result<HttpAnswer>> done) = 0;
};

}  // namespace corvane
