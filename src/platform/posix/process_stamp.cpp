#include "platform/posix/process_stamp.h"

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <vector>

namespace corvane {

namespace {

// Positions in /proc/PID/stat behind the command's closing bracket; see proc(5).
constexpr std::size_t kState = 0;
constexpr std::size_t kSession = 3;
constexpr std::size_t kStartTime = 19;

std::vector<std::string> fieldsBehindName(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string line;
  std::getline(file, line);
  // A command may hold blanks and brackets of its own; the last bracket ends it.
  const auto bracket = line.rfind(')');
  if (bracket == std::string::npos) return {};
  std::istringstream rest(line.substr(bracket + 1));
  return {std::istream_iterator<std::string>(rest), {}};
}

// Empty when it does not run.
std::vector<std::string> fieldsOfRunning(pid_t pid) {
  auto fields = fieldsBehindName(pid);
  if (fields.size() <= kStartTime || fields[kState] == "Z" || fields[kState] == "X") fields.clear();
  return fields;
}

std::string bootId() {
  std::ifstream boot("/proc/sys/kernel/random/boot_id");
  std::string id;
  std::getline(boot, id);
  return id;
}

std::uint64_t numberOf(std::string_view text) {
  std::uint64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace

std::optional<std::string> processStamp(pid_t pid) {
  if (pid <= 0) return std::nullopt;
  const auto fields = fieldsOfRunning(pid);
  if (fields.empty()) return std::nullopt;
  return bootId() + "/" + fields[kStartTime];
}

std::vector<pid_t> processesOfSession(pid_t leader, std::string_view stamp) {
  const auto slash = stamp.rfind('/');
  if (leader <= 1 || slash == stamp.npos || stamp.substr(0, slash) != bootId()) return {};
  if (const auto now = processStamp(leader); now && *now != stamp) return {};
  const auto openedAt = numberOf(stamp.substr(slash + 1));
  std::vector<pid_t> found;
  std::error_code error;
  for (std::filesystem::directory_iterator at("/proc", error), end; !error && at != end; at.increment(error)) {
    const auto pid = static_cast<pid_t>(numberOf(at->path().filename().native()));
    const auto fields = pid > 0 ? fieldsOfRunning(pid) : std::vector<std::string>();
    if (fields.empty() || fields[kSession] != std::to_string(leader) || numberOf(fields[kStartTime]) < openedAt)
      continue;
    found.push_back(pid);
  }
  return found;
}

}  // namespace corvane
