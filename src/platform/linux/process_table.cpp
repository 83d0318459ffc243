#include "platform/linux/process_table.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include "platform/posix/bundle_path.h"

namespace corvane {

namespace {

// What the kernel puts behind the path of an executable that was replaced or removed since.
constexpr std::string_view kDeleted = " (deleted)";

std::string_view lastComponent(std::string_view path) { return path.substr(path.rfind('/') + 1); }

bool isInterpreter(std::string_view executable) {
  static constexpr std::array<std::string_view, 8> kNames{"sh",  "bash", "dash", "zsh",
                                                          "ksh", "perl", "ruby", "busybox"};
  const auto name = lastComponent(executable);
  // Versions are part of the name: python3, python3.11, zsh5, ruby3.1.
  const auto plain = name.substr(0, name.find_first_of("0123456789-."));
  return plain == "python" || std::ranges::find(kNames, plain) != kNames.end();
}

std::optional<uid_t> ownerOf(const std::filesystem::path& folder) {
  struct stat found {};
  if (::stat(folder.c_str(), &found) != 0) return std::nullopt;
  return found.st_uid;
}

std::vector<std::string> argumentsOf(const std::filesystem::path& folder) {
  std::ifstream file(folder / "cmdline", std::ios::binary);
  std::vector<std::string> arguments;
  for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(std::move(argument));
  return arguments;
}

std::string executableOf(const std::filesystem::path& folder, const std::vector<std::string>& arguments) {
  std::error_code error;
  auto target = std::filesystem::read_symlink(folder / "exe", error).native();
  if (error) return arguments.empty() ? std::string() : arguments.front();
  if (target.ends_with(kDeleted)) target.resize(target.size() - kDeleted.size());
  return target;
}

}  // namespace

std::optional<std::string> interpretedScript(const std::string& executable, const std::vector<std::string>& arguments) {
  if (!isInterpreter(executable) || arguments.size() < 2) return std::nullopt;
  const auto script = std::find_if(arguments.begin() + 1, arguments.end(),
                                   [](const std::string& argument) { return !argument.starts_with('-'); });
  if (script == arguments.end() || !script->starts_with('/')) return std::nullopt;
  struct stat found {};
  const bool file = ::stat(script->c_str(), &found) == 0 && S_ISREG(found.st_mode);
  if (!file && !outermostBundle(*script)) return std::nullopt;
  return *script;
}

std::optional<RunningProcess> readProcess(const std::filesystem::path& folder, pid_t pid) {
  const auto owner = ownerOf(folder);
  // Threads of the kernel and the dead have no arguments.
  const auto arguments = argumentsOf(folder);
  if (!owner || arguments.empty()) return std::nullopt;
  auto executable = executableOf(folder, arguments);
  if (auto script = interpretedScript(executable, arguments)) executable = std::move(*script);
  if (!executable.starts_with('/')) return std::nullopt;
  RunningProcess process{.pid = pid, .uid = *owner, .executable = std::move(executable)};
  process.bundlePath = outermostBundle(process.executable);
  return process;
}

}  // namespace corvane
