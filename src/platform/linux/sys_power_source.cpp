#include "platform/linux/sys_power_source.h"

#include <fstream>
#include <string>
#include <system_error>

namespace corvane {

namespace {

std::string firstLine(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

}  // namespace

bool SysPowerSource::isOnACPower() const {
  bool hasBattery = false;
  std::error_code problem;
  for (const auto& supply : std::filesystem::directory_iterator(supplies_, problem)) {
    const auto type = firstLine(supply.path() / "type");
    if (type == "Battery") {
      hasBattery |= firstLine(supply.path() / "scope") != "Device";
    } else if (!type.empty() && firstLine(supply.path() / "online") == "1") {
      return true;
    }
  }
  return !hasBattery;
}

}  // namespace corvane
