// How a benchmark tells its result: one line a figure, the same for all.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <string_view>
#include <vector>

namespace corvane::bench {

// Median wall time of `runs` calls in microseconds, after one warm-up.
template <class F>
double medianMicroseconds(int runs, F&& call) {
  call();
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) {
    const auto start = std::chrono::steady_clock::now();
    call();
    times.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
  }
  std::ranges::nth_element(times, times.begin() + runs / 2);
  return times[static_cast<std::size_t>(runs / 2)];
}

// name | value | what it is held against | its value | ratio | goal | ok or misses. `goal` is the largest
// allowed ratio of value to other; with `atLeast` it is the smallest allowed ratio of other to value.
struct Against {
  std::string_view name;
  double value = 0;
};
inline void ratioFigure(std::string_view name, std::string_view unit, double value, Against other, double goal,
                        bool atLeast = false) {
  const double ratio = atLeast ? other.value / value : value / other.value;
  const bool ok = atLeast ? ratio >= goal : ratio <= goal;
  fmt::print("{} | {:.1f} {} | {} | {:.1f} {} | {:.2f} | {} {} times | {}\n", name, value, unit, other.name,
             other.value, unit, ratio, atLeast ? "at least" : "at most", goal, ok ? "ok" : "misses");
}

// A figure with a limit of its own.
inline void limitFigure(std::string_view name, std::string_view unit, double value, double limit) {
  fmt::print("{} | {:.3f} {} | limit | {} {} | {:.2f} | at most {} {} | {}\n", name, value, unit, limit, unit,
             value / limit, limit, unit, value <= limit ? "ok" : "misses");
}

}  // namespace corvane::bench
