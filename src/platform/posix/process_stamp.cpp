#include "platform/posix/process_stamp.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace corvane {

namespace {

// Positions in /proc/PID/stat behind the command's closing bracket; see proc(5).
constexpr std::size_t kState = 0;
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

}  // namespace

std::optional<std::string> processStamp(pid_t pid) {
  if (pid <= 0) return std::nullopt;
  const auto fields = fieldsBehindName(pid);
  if (fields.size() <= kStartTime) return std::nullopt;
  if (fields[kState] == "Z" || fields[kState] == "X") return std::nullopt;
  std::ifstream boot("/proc/sys/kernel/random/boot_id");
  std::string bootId;
  std::getline(boot, bootId);
  return bootId + "/" + fields[kStartTime];
}

}  // namespace corvane
