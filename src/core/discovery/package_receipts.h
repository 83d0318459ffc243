// What Apple's installer noted of the packages that it installed.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/logging/logging_service.h"

namespace corvane {

struct PackageReceipt {
  std::string packageID;
  std::string version;
  std::string installPrefix;  // relative to the volume, "Applications"; empty or "/" for the volume itself
  friend bool operator==(const PackageReceipt&, const PackageReceipt&) = default;

  // The package put its files into a folder of applications, so a receipt without a bundle is a left-over of
  // an application that was thrown away.
  [[nodiscard]] bool installsApplications() const;
};

// The receipts under /var/db/receipts. The folder is listed once; a receipt is read when it is asked for.
class PackageReceipts {
 public:
  // An unreadable folder is a log line and no receipts; a missing one is no receipts.
  PackageReceipts(const std::filesystem::path& root, const Logger& logger);

  // Absent when there is none or, with a log line that names it, when it is damaged or belongs to another
  // package than its name says. Any thread.
  [[nodiscard]] std::optional<PackageReceipt> find(std::string_view packageID) const;

 private:
  std::filesystem::path folder_;
  std::vector<std::string> names_;  // sorted
  Logger logger_;
};

}  // namespace corvane
