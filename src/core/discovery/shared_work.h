// Work on many small files, shared with one more thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <system_error>
#include <thread>

namespace corvane {

// Below this many files the second thread costs more than it saves.
inline constexpr std::size_t kWorthAThread = 64;

// Whether a thread could be had for it.
template <class Work>
bool startedOn(std::jthread& thread, const Work& work) {
  try {
    thread = std::jthread(work);
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

// Calls `work(i)` once for each i below `count`, in no order, from this thread and at most one other. `work` must be
// callable from two threads at a time and must not throw. Returns when all calls have.
template <class Work>
void forEachShared(std::size_t count, const Work& work) {
  constexpr std::size_t kPortion = 16;  // neighbours in a list are neighbours on disk
  std::atomic<std::size_t> next{0};
  const auto takeAll = [&] {
    for (auto from = next.fetch_add(kPortion); from < count; from = next.fetch_add(kPortion))
      for (auto i = from; i < from + kPortion && i < count; ++i) work(i);
  };
  std::jthread second;
  if (count >= kWorthAThread && std::thread::hardware_concurrency() > 1) (void)startedOn(second, takeAll);
  takeAll();
}

// Both at once, the second on a thread of its own where there is one. Neither may throw. Returns when both have.
template <class First, class Second>
void bothAtOnce(const First& first, const Second& second) {
  std::jthread other;
  const bool shared = std::thread::hardware_concurrency() > 1 && startedOn(other, second);
  first();
  if (!shared) second();
}

}  // namespace corvane
