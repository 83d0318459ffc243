// The administrator's command line: the model and the helper client without windows.
#include <sys/ioctl.h>
#include <unistd.h>

#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/version.h"
#include "ctl/report.h"
#include "ctl/session.h"
#include "ctl/text_width.h"
#include "platform/posix/standard_descriptors.h"
#include "programs/user/interruption.h"
#include "programs/user/user_diagnostics.h"
#include "programs/user/user_machine.h"
#include "programs/user/user_places.h"

namespace {

using namespace corvane;
using ctl::ExitCode;

// Why the first write to standard output failed; what follows it may use errno for itself.
int outputProblem = 0;

void write(std::FILE* stream, std::string_view text) {
  const bool whole = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  if (!whole && stream == stdout && outputProblem == 0) outputProblem = errno;
}

int fail(const Error& error, bool json, ExitCode code) {
  if (json)
    write(stdout, writeJson(ctl::errorJson(error)) + "\n");
  else
    write(stderr, "corvanectl: " + error.text + "\n");
  return static_cast<int>(code);
}

// Absent where it is no terminal, or one that does not know its size.
std::optional<std::size_t> columnsOf(int descriptor) {
  winsize size{};
  if (isatty(descriptor) == 0 || ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

// One line on a terminal that replaces itself; an empty text takes it away. What wraps could not be taken away.
void showProgress(std::string_view text) {
  write(stderr, "\r\033[K");
  const auto columns = columnsOf(STDERR_FILENO);
  write(stderr, columns ? ctl::elided(text, *columns - 1) : std::string(text));
  std::fflush(stderr);
}

// Only the helper is waited for. It does not end an install because nobody waits, so the person must know that it
// goes on.
extern "C" void endWaiting(int signal) {
  constexpr std::string_view kWords = "\ncorvanectl: no longer waiting; the helper finishes what it was asked to do.\n";
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, kWords.data(), kWords.size());
  ::raise(signal);  // again, now with what it does by default
}

void tellWhenWaitingEnds() {
  struct sigaction action {};
  action.sa_handler = endWaiting;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGINT, SIGTERM}) ::sigaction(signal, &action, nullptr);
}

int run(const ctl::Command& command) {
  const auto places = placesFromEnvironment();
  if (!places) return fail(places.error(), command.json, ExitCode::failed);
  Interruption interruption;
  UserMachine machine(*places);
  AskedFor focus;
  Services services(machine.ports(focus));
  const auto config = services.preferences.loadConfiguration();
  machine.log.refreshVerbosityFromPreferences(config->verboseMode, config->debugMode);
  HelperStart helperStart(services.installation, machine.loop.mainQueue());

  const ctl::World world{
      .services = services.workflow(),
      .helperStart = helperStart,
      .stateLock = machine.stateLock,
      .pump =
          [&](const std::function<bool()>& done, Duration limit) {
            tellWhenWaitingEnds();
            return machine.loop.pump(done, limit);
          },
      .writeBundle =
          [&](std::string_view output) {
            UserDiagnostics diagnostics(machine, services);
            std::error_code none;
            return awaitDiagnosticBundle(
                diagnostics.writer(),
                standardizedPath(output, diagnostics.homes(), std::filesystem::current_path(none)),
                [&](const auto& done, Duration limit) { return interruption.pump(machine.loop, done, limit); });
          },
      .columns = columnsOf(STDOUT_FILENO),
      .out = [](std::string_view text) { write(stdout, text); },
      .err = [](std::string_view text) { write(stderr, text); },
      .progress = isatty(STDERR_FILENO) != 0 ? std::function<void(std::string_view)>(showProgress) : nullptr};
  return static_cast<int>(ctl::runCommand(command, world));
}

int answer(const std::vector<std::string_view>& arguments) {
  const auto command = ctl::parseCommand(arguments);
  if (!command) return fail(command.error(), ctl::wantsJson(arguments), ExitCode::usage);
  switch (command->kind) {
    case ctl::Command::Kind::help:
      write(stdout, command->verbGiven ? std::string(ctl::factsOf(command->verb).help) : ctl::overviewHelp());
      return 0;
    case ctl::Command::Kind::version:
      write(stdout, command->json ? writeJson(JsonObject{{"version", kProgramVersion}}) + "\n"
                                  : fmt::format("corvanectl {}\n", kProgramVersion));
      return 0;
    case ctl::Command::Kind::run:
      break;
  }
  return run(*command);
}

}  // namespace

// Whoever reads the output must not take half of it for the whole.
int main(int argc, char** argv) {
  fillStandardDescriptors();
  const int code = answer({argv + 1, argv + argc});
  if (std::fflush(stdout) != 0 && outputProblem == 0) outputProblem = errno;
  if (outputProblem == 0 || outputProblem == EPIPE) return code;
  write(stderr,
        "corvanectl: the output could not be written: " + std::generic_category().message(outputProblem) + "\n");
  return code == 0 ? static_cast<int>(ExitCode::failed) : code;
}
