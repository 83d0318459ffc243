// Small documents over HTTP. Follows redirects, keeps no cookies, stores nothing.
#pragma once

#include <string>

#include "base/date.h"
#include "base/error.h"
#include "base/task.h"

namespace corvane {

struct HttpAnswer {
  int status = 0;  // of the last answer behind redirects
  std::string body;
  friend bool operator==(const HttpAnswer&, const HttpAnswer&) = default;
};

// A body above this size fails the request.
inline constexpr std::size_t kHttpBodyLimit = 4U << 20U;

// Main thread.
class HttpClient {
 public:
  virtual ~HttpClient() = default;

  // `done` runs once in a later turn: with any answer whatever its status, or with an error when none came within
  // `timeLimit`, for an address that is none, and without a network.
  virtual void get(std::string url, Duration timeLimit, Completion<Result<HttpAnswer>> done) = 0;
};

}  // namespace corvane
