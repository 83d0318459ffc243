// How a benchmark tells its result: one line a figure, the same for all.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::bench {

template <class F>
double microsecondsOf(F&& call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::ranges::nth_element(times, middle);
  return *middle;
}

// Median wall time of `runs` calls in microseconds, after one warm-up.
template <class F>
double medianMicroseconds(int runs, F&& call) {
  call();
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) times.push_back(microsecondsOf(call));
  return median(std::move(times));
}

// The medians of two calls that take turns, so that what else the machine does falls on both alike.
struct Pair {
  double ours = 0;
  double other = 0;
};
template <class F, class G>
Pair medianMicrosecondsInTurns(int runs, F&& ours, G&& other) {
  ours();
  other();
  std::vector<double> a;
  std::vector<double> b;
  for (int i = 0; i < runs; ++i) {
    a.push_back(microsecondsOf(ours));
    b.push_back(microsecondsOf(other));
  }
  return {median(std::move(a)), median(std::move(b))};
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
