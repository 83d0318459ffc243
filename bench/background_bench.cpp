// Work that nobody watches, held against what it may cost: looks at a state file, timers, and what a helper's passes
// leave behind in its memory.
#include <malloc.h>

#include <array>

#include "background/repeating_timer.h"
#include "core/history/helper_state_stores.h"
#include "figure.h"
#include "helper/own_work_fixture.h"
#include "platform/posix/posix_files.h"

namespace corvane {
namespace {

double microsecondsOfAPoll() {
  constexpr int kPolls = 2'000;
  const testing::TemporaryFolder folder;
  PosixFiles files;
  RecordingLog log;
  HelperBackgroundPatchStateStore store(folder.path() / "helper-state.json", files, log);
  const VirtualMachine machine;
  BackgroundPatchSummary summary{.runID = "0FE2B1A4-55C7-4E5B-9C3E-2C1D7A60B9F1", .completedAt = machine.now()};
  for (int i = 0; i < 20; ++i) summary.labels.emplace_back(fmt::format("label{}", i));
  if (!store.write({.lastBackgroundPatchSummary = summary})) return std::numeric_limits<double>::infinity();
  bool all = true;
  const auto time = bench::medianMicroseconds(kPolls, [&] { all = store.read().has_value() && all; });
  return all ? time : std::numeric_limits<double>::infinity();
}

// As many timers as the application has, each with a pace of its own.
double nanosecondsOfATick() {
  constexpr auto kPaces = std::to_array<std::chrono::seconds>({1s, 5s, 15s, 30s, 60s, 60s, 60s, 300s, 3600s, 14400s});
  VirtualMachine machine;
  std::vector<std::unique_ptr<RepeatingTimer>> timers;
  std::size_t ticks = 0;
  for (const auto pace : kPaces) {
    timers.push_back(std::make_unique<RepeatingTimer>(machine.main()));
    timers.back()->start({.first = pace, .interval = pace, .leeway = Duration::zero()}, [&ticks] { ++ticks; });
  }
  const auto time = bench::microsecondsOf([&machine] { machine.advance(14 * 24h); });
  return time * 1e3 / static_cast<double>(ticks);
}

class Helper final : public OwnWorkFixture {
 public:
  // What `passes` of them leave on the heap, each of which checks two applications and installs one.
  double kibibytesLeftBy(int passes) {
    start();
    constexpr int kWarmUp = 20;
    run(kWarmUp);
    const auto before = mallinfo2().uordblks;
    run(passes);
    return (static_cast<double>(mallinfo2().uordblks) - static_cast<double>(before)) / 1024;
  }
  [[nodiscard]] bool installedEachTime() const { return missed_ == 0; }
  void TestBody() override {}

 private:
  void run(int passes) {
    for (int i = 0; i < passes; ++i) {
      install("quill", "1.0");
      machine.advance(4h + kMinute);
      if (children.takeStarted().empty()) ++missed_;
      // The doubles remember; a helper has these on disk.
      log.clear();
      (void)files.remove(kReceipts);
    }
  }
  int missed_ = 0;
};

}  // namespace
}  // namespace corvane

int main() {
  using namespace corvane;
  constexpr int kPasses = 1'000;
  bench::limitFigure("poll of an unchanged state file", "µs", microsecondsOfAPoll(), 20);
  bench::limitFigure("virtual timer tick", "ns", nanosecondsOfATick(), 1'000);
  Helper helper;
  const auto left = helper.kibibytesLeftBy(kPasses);
  bench::limitFigure("what 1,000 passes of the helper leave in its memory", "KiB",
                     helper.installedEachTime() ? left : std::numeric_limits<double>::infinity(), 64);
}
