#include "app/diagnostic_job.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <system_error>

#include "base/localized.h"
#include "core/records/diagnostic_argument_error.h"

namespace corvane {

namespace fs = std::filesystem;

fs::path standardizedPath(std::string_view path, const HomeOf& homeOf, const fs::path& current) {
  fs::path whole = path;
  if (path.starts_with('~')) {
    const auto user = path.substr(1, path.find('/') == std::string_view::npos ? path.npos : path.find('/') - 1);
    auto rest = path.substr(1 + user.size());
    rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
    if (const auto home = homeOf(user)) whole = *home / rest;
  }
  auto standard = (current / whole).lexically_normal();
  return standard.has_filename() || standard == standard.root_path() ? standard : standard.parent_path();
}

Result<std::string_view> diagnosticDestination(std::span<const std::string_view> arguments) {
  auto option = std::ranges::find(arguments, "--output");
  if (option == arguments.end()) return kDiagnosticFolder;
  // An empty one is what a script makes of a variable without a value.
  if (++option == arguments.end() || option->empty() || option->starts_with("--"))
    return std::unexpected(DiagnosticArgumentError::missingOutputPath());
  return *option;
}

std::string byteCountText(std::uint64_t bytes) {
  if (bytes == 1) return "1 byte";
  if (bytes < 1000) return fmt::format("{} bytes", bytes);
  struct Unit {
    std::string_view name;
    int digits;  // behind the point, as far as they are not zeros
  };
  constexpr std::array kUnits{Unit{"KB", 0}, Unit{"MB", 1}, Unit{"GB", 2}, Unit{"TB", 2}};
  double value = static_cast<double>(bytes) / 1000;
  auto unit = kUnits.begin();
  for (; value >= 999.5 && unit + 1 != kUnits.end(); ++unit) value /= 1000;
  auto text = fmt::format("{:.{}f}", value, unit->digits);
  if (unit->digits > 0) text.erase(text.find_last_not_of("0") + 1);
  if (text.ends_with('.')) text.pop_back();
  return fmt::format("{} {}", text, unit->name);
}

Result<fs::path> awaitDiagnosticBundle(const DiagnosticWriter& write, const fs::path& output,
                                       const DiagnosticPump& pump) {
  // Shared, for the answer may come after nobody waits for it any more.
  const auto outcome = std::make_shared<std::optional<Result<fs::path>>>();
  write(output, [outcome](Result<fs::path> result) { *outcome = std::move(result); });
  switch (pump([&] { return outcome->has_value(); }, kDiagnosticLimit)) {
    case Waited::done:
      return **outcome;
    case Waited::interrupted:
      return failure("CRVDiagnosticJob", EINTR, localized("The diagnostic bundle was given up."));
    case Waited::tooLong:
      break;
  }
  return failure("CRVDiagnosticJob", ETIMEDOUT, localized("Timed out generating the diagnostic bundle."));
}

int runDiagnosticJob(std::span<const std::string_view> arguments, const DiagnosticJob& job) {
  const auto say = [&](std::string_view line) { job.err(fmt::format("{}: {}\n", job.title, line)); };
  const auto named = diagnosticDestination(arguments);
  if (!named) {
    say(named.error().text);
    return 1;
  }
  const auto destination = standardizedPath(*named, job.homeOf, job.current);
  const bool chatty = job.terminal || std::ranges::find(arguments, "--verbose") != arguments.end();
  if (chatty) say("Generating diagnostic bundle …");
  const auto zip = awaitDiagnosticBundle(job.write, destination, job.pump);
  if (!zip) {
    say(fmt::format("Unable to write diagnostic bundle to {}: {}", destination.string(), zip.error().text));
    return 1;
  }
  std::error_code gone;
  const auto size = fs::file_size(*zip, gone);
  if (chatty) say(fmt::format("Diagnostic bundle saved ({})", byteCountText(gone ? 0 : size)));
  job.out(zip->string() + "\n");
  if (chatty) say("Attach this file to your GitHub issue or support request.");
  return 0;
}

}  // namespace corvane
