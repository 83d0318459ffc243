// The sink for anonymous usage signals. Whether and how they leave the machine is the sink's business: no
// caller asks whether signals are switched on.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane {

// No application, user or machine is ever named in one; only counts in buckets.
struct UsageSignal {
  std::string name;
  std::vector<std::pair<std::string, std::string>> parameters;
  std::optional<double> floatValue;
  friend bool operator==(const UsageSignal&, const UsageSignal&) = default;
};

// Main thread. Sending never fails its caller and answers at once.
class UsageSignals {
 public:
  virtual ~UsageSignals() = default;
  virtual void send(const UsageSignal& signal) = 0;
};

// The client behind the sink. Main thread; starting a started one and stopping a stopped one do nothing.
class TelemetrySwitch {
 public:
  virtual ~TelemetrySwitch() = default;
  [[nodiscard]] virtual bool started() const = 0;
  virtual void start() = 0;
  virtual void stop() = 0;
};

// "0" below 1, "1", "2-5", "6-20" or "21+".
[[nodiscard]] constexpr std::string_view usageCountBucket(std::int64_t count) {
  if (count < 1) return "0";
  if (count == 1) return "1";
  if (count <= 5) return "2-5";
  if (count <= 20) return "6-20";
  return "21+";
}

}  // namespace corvane
