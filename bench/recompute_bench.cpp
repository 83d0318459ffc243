// How long it takes to count a whole inventory anew, badge and side effects included.
#include <fmt/format.h>

#include <memory>

#include "figure.h"
#include "workflow/workflow_fixture.h"

namespace corvane {
namespace {

// Of each seven applications: outdated, current, unchecked, a team mismatch, a failed check, one with a failed
// receipt, one held back.
Apps inventory(std::size_t count) {
  Apps apps;
  for (std::size_t i = 0; i < count; ++i) {
    const auto name = fmt::format("label{}", i);
    AppInfo app;
    app.label = Label(name);
    app.name = "Application " + name;
    app.appPath = "/Applications/" + name + ".app";
    app.currentVersion = fmt::format("{}.4.{}", i % 20, i % 7);
    if (i % 7 != 2) app.newVersion = fmt::format("{}.{}.1", i % 20, i % 7 == 1 ? 4 : 5);
    app.teamIDMismatch = i % 7 == 3;
    app.updateCheckFailed = i % 7 == 4;
    apps.push_back(std::move(app));
  }
  return apps;
}

class Workflow final : public WorkflowTest {
 public:
  explicit Workflow(std::size_t count) {
    preferences.writePreference("RequiredLabels", std::vector<std::string>{"label1*", "special"});
    for (std::size_t i = 5; i < count; i += 7)
      for (int failures = 0; failures < (i % 2 == 0 ? 3 : 1); ++failures)
        (void)receipts.append({.label = Label(fmt::format("label{}", i)),
                               .timestamp = time.now(),
                               .status = PatchingStatus::failure,
                               .targetVersion = "9.9",
                               .installomatorExitCode = 2});
    buildWith(inventory(count));
  }
  double microseconds() {
    return bench::medianMicroseconds(51, [this] { model->recomputeCounts(); });
  }
  void TestBody() override {}
};

}  // namespace
}  // namespace corvane

int main() {
  using namespace corvane;
  const double small = Workflow(500).microseconds();
  const double large = Workflow(5000).microseconds();
  bench::limitFigure("recomputeCounts, 5,000 applications", "ms", large / 1000, 5);
  // A quadratic step would show as 10; the rest is head room for processor caches that no longer fit.
  bench::ratioFigure("recomputeCounts, 5,000 applications", "us", large, {"ten times that of 500", 10 * small}, 2);
}
