// What a question to a bus is made of, how it may come out, and how long one may take.
#pragma once

#include <algorithm>
#include <chrono>
#include <expected>
#include <string>

namespace corvane {

// Why nothing was heard.
enum class Silence {
  nobody,      // no such bus, service, object, operation or property: nothing is there that could say otherwise
  unreadable,  // something is there, but did not answer in time, refused, or answered in a form not agreed
};

template <typename Value>
using Heard = std::expected<Value, Silence>;

struct BusObject {
  std::string owner;  // a call to a unique name (":1.42") starts no service
  std::string path;
  std::string interface;
};

struct BusCall {
  BusObject object;
  std::string method;
};

// How long the main thread may stand still. A desktop's services answer in about a millisecond.
struct BusPatience {
  std::chrono::milliseconds call{250};    // for one call
  std::chrono::milliseconds answer{600};  // for all the calls of one answer
};

// The end of one answer's patience.
class BusDeadline {
 public:
  explicit BusDeadline(const BusPatience& patience)
      : call_(patience.call), end_(std::chrono::steady_clock::now() + patience.answer) {}

  // What the next call may take; zero when there is no time for one.
  [[nodiscard]] std::chrono::microseconds nextCall() const {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end_ - std::chrono::steady_clock::now());
    return std::clamp(left, std::chrono::microseconds::zero(), call_);
  }

 private:
  std::chrono::microseconds call_;
  std::chrono::steady_clock::time_point end_;
};

}  // namespace corvane
