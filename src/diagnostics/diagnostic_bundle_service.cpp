#include "diagnostics/diagnostic_bundle_service.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "base/ascii.h"
#include "base/localized.h"
#include "base/utf8.h"
#include "diagnostics/bundle_output.h"
#include "diagnostics/diagnostic_summary.h"
#include "diagnostics/staged_bundle.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr const char* kZip = "/usr/bin/zip";
constexpr const char* kId = "/usr/bin/id";
constexpr std::string_view kLoginWindow = "loginwindow";

std::vector<std::pair<std::string, std::string>> toolEnvironment() {
  return {{"PATH", "/usr/bin:/bin:/usr/sbin:/sbin"}, {"LANG", "C.UTF-8"}};
}

bool isFile(const fs::path& path) {
  std::error_code none;
  return fs::is_regular_file(path, none);
}

std::optional<std::uint64_t> sizeOfFile(const fs::path& path) {
  std::error_code none;
  if (fs::symlink_status(path, none).type() != fs::file_type::regular) return std::nullopt;
  const auto size = fs::file_size(path, none);
  return none ? std::nullopt : std::optional<std::uint64_t>(size);
}

std::optional<std::size_t> labelFilesIn(const fs::path& folder) {
  std::error_code error;
  std::size_t count = 0;
  fs::directory_iterator entry(folder, error);
  if (error) return std::nullopt;
  for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    if (entry->path().native().ends_with(".sh")) ++count;
  return count;
}

// Of several, who came last: the screen shows that session.
std::optional<ConsolePerson> personAt(const ConsoleSessions& console, const Accounts& accounts) {
  const auto sessions = console.sessions();
  if (!sessions || sessions->empty()) return std::nullopt;
  const auto& latest = *std::ranges::max_element(*sessions, {}, &ConsoleSession::loggedInAt);
  if (latest.user.empty() || latest.user == kLoginWindow) return std::nullopt;
  const auto home = accounts.homeOf(latest.user);
  if (!home) return std::nullopt;
  return ConsolePerson{
      .name = latest.user, .home = *home, .fallbackLogSize = sizeOfFile(CorvaneConstants{.home = *home}.userLogFile())};
}

std::string receiptLines(Receipts receipts) {
  if (receipts.size() > DiagnosticBundleService::kReceipts) receipts.resize(DiagnosticBundleService::kReceipts);
  std::string text;
  for (const auto& receipt : receipts) text += writeJson(withSortedKeys(toJson(receipt))) + "\n";
  return text;
}

}  // namespace

struct DiagnosticBundleService::Run {
  std::optional<fs::path> output;
  Completion<Result<fs::path>> done;
  std::shared_ptr<StagedBundle> staged;
  DiagnosticContent content;
  BundleOutput place;
  std::shared_ptr<ChildHandle> child;

  [[nodiscard]] fs::path zipFile() const { return staged->root() / (content.bundleName + ".zip"); }
};

Error DiagnosticBundleService::Error::outputUnavailable(std::string_view path) {
  return {domain, outputUnavailableCode, localized("Could not write the diagnostic bundle to {}.", path)};
}

Error DiagnosticBundleService::Error::zipFailed(std::int32_t exitCode, std::string_view stderrText) {
  const auto words = isUtf8(stderrText) ? trimmed(stderrText) : std::string_view();
  return {domain, zipFailedCode,
          words.empty() ? localized("zip exited with code {}.", exitCode)
                        : localized("zip exited with code {}: {}", exitCode, words)};
}

Error DiagnosticBundleService::Error::desktopUnavailable() {
  return {domain, desktopUnavailableCode, localized("Could not find the user's Desktop folder.")};
}

DiagnosticBundleService::DiagnosticBundleService(Services services) : s_(std::move(services)) {}

DiagnosticBundleService::~DiagnosticBundleService() {
  for (auto& run : runs_) {
    run.staged->cancel();
    if (run.child) run.child->kill();
    run.done.abandon();
  }
}

DiagnosticRun DiagnosticBundleService::toDesktop() {
  return [this](Completion<Result<fs::path>> done) { generateBundle(std::nullopt, std::move(done)); };
}

DiagnosticFacts DiagnosticBundleService::facts(Date now) const {
  return {.now = now,
          .shortVersion = s_.bundle.shortVersion(),
          .build = s_.bundle.version(),
          .bundlePath = s_.bundle.path(),
          .operatingSystem = s_.operatingSystem,
          .helperStatus = s_.installation.status(),
          .helperOperational = s_.installation.isOperational(),
          .registeredDigest = s_.installation.lastRegisteredHelperCDHash(),
          .bundledDigest = s_.installation.currentHelperCDHash(),
          .heartbeat = s_.installation.helperHeartbeatDate(),
          .printExitCode = s_.installation.launchctlPrintExitCode(),
          .installomatorPresent = isFile(s_.places.installomatorScript()),
          .functionsPresent = isFile(s_.places.fragmentsPath() / "functions.sh"),
          .labelFiles = labelFilesIn(s_.places.labelsFolder()),
          .logPath = s_.log.logFilePath(),
          .usesFallbackLog = s_.log.isUsingUserFallback(),
          .userName = s_.accounts.userName(),
          .groups = {},
          .console = personAt(s_.console, s_.accounts)};
}

fs::path DiagnosticBundleService::homeConcerned(const DiagnosticFacts& facts) const {
  return s_.accounts.isRoot() && facts.console ? facts.console->home : s_.places.home;
}

void DiagnosticBundleService::generateBundle(std::optional<fs::path> output, Completion<Result<fs::path>> done) {
  const auto now = s_.clock.now();
  auto known = facts(now);
  const auto state = s_.helperState.read();
  const auto run = runs_.insert(
      runs_.end(), Run{.output = std::move(output),
                       .done = std::move(done),
                       .staged = std::make_shared<StagedBundle>(s_.temporaryFolder, s_.entropy.uuid()),
                       .content = {.bundleName = bundleName(now, s_.locale.calendar()),
                                   .summary = {},
                                   .helperState = state ? std::optional(writeJsonPretty(withSortedKeys(toJson(*state))))
                                                        : std::nullopt,
                                   .receipts = receiptLines(s_.receipts.readAllReceipts()),
                                   .places = s_.places,
                                   .home = homeConcerned(known)},
                       .place = {},
                       .child = nullptr});
  run->child = s_.children.start(
      {.executable = kId, .arguments = {"-Gn"}, .environment = toolEnvironment(), .timeLimit = kGroupsLimit}, nullptr,
      lifeline_.guard([this, run, known = std::move(known)](Result<ChildExit> exit) mutable {
        if (exit) known.groups = groupNames(exit->output);
        run->content.summary = summaryText(known);
        run->child = nullptr;
        stage(run);
      }));
}

void DiagnosticBundleService::stage(Runs::iterator run) {
  auto job = [staged = run->staged, content = run->content, output = run->output,
              desktop = run->output ? std::nullopt : s_.accounts.desktop()]() -> Result<BundleOutput> {
    const auto filled = staged->fill(content);
    auto place = filled ? resolveOutput(output, desktop) : std::unexpected(filled.error());
    if (!place) staged->remove();
    return place;
  };
  runThen(s_.work, s_.main, std::move(job), lifeline_.guard([this, run](Result<BundleOutput> place) {
    if (!place) return end(run, std::unexpected(std::move(place.error())));
    run->place = std::move(*place);
    zip(run);
  }));
}

void DiagnosticBundleService::zip(Runs::iterator run) {
  // Both of its streams are read while it runs, so that nothing it has to say can hold it up.
  run->child = s_.children.start({.executable = kZip,
                                  .arguments = {"-r", "-q", run->zipFile().string(), run->content.bundleName},
                                  .environment = toolEnvironment(),
                                  .folder = run->staged->root().string(),
                                  .endsGroup = true},
                                 nullptr, lifeline_.guard([this, run](Result<ChildExit> exit) {
                                   run->child = nullptr;
                                   if (!exit) return finish(run, std::unexpected(std::move(exit.error())));
                                   if (exit->code != 0)
                                     return finish(run, std::unexpected(Error::zipFailed(exit->code, exit->errors)));
                                   finish(run, {});
                                 }));
}

void DiagnosticBundleService::finish(Runs::iterator run, Status zipped) {
  auto job = [staged = run->staged, zip = run->zipFile(), place = run->place, name = run->content.bundleName,
              zipped = std::move(zipped)]() -> Result<fs::path> {
    auto delivered = zipped ? deliver(zip, place, name) : std::unexpected(zipped.error());
    staged->remove();
    return delivered;
  };
  runThen(s_.work, s_.main, std::move(job),
          lifeline_.guard([this, run](Result<fs::path> result) { end(run, std::move(result)); }));
}

void DiagnosticBundleService::end(Runs::iterator run, Result<fs::path> result) {
  auto done = std::move(run->done);
  runs_.erase(run);
  done(std::move(result));
}

}  // namespace corvane
