// What is remembered of patch runs and deferrals.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/date.h"
#include "base/uuid.h"
#include "core/records/app_info.h"
#include "core/records/enumerations.h"

namespace corvane {

// One finished label of one patch run: one line of receipts.jsonl, written by the root helper.
struct PatchingReceipt {
  Label label;
  Date timestamp;
  PatchingStatus status = PatchingStatus::success;
  std::optional<std::string> version;        // what the run left installed
  std::optional<std::string> targetVersion;  // what the run aimed at
  std::int64_t installomatorExitCode = 0;    // -1: ended without error, but the old version is still there
  std::optional<bool> usedStagedInstaller;   // absent in receipts that predate staging

  friend bool operator==(const PatchingReceipt&, const PatchingReceipt&) = default;
};

// One event of the deferral history, one record a label.
struct DeferralEventRecord {
  Uuid id;
  Label label;
  std::string appName;
  DeferralEventType eventType = DeferralEventType::userDeferred;
  Date timestamp;
  std::optional<std::int64_t> deferralMinutes;
  std::optional<DeferralEscalation> escalation;

  friend bool operator==(const DeferralEventRecord&, const DeferralEventRecord&) = default;
};

// Objects with the field names above, dates in ISO 8601 UTC, enumerations as raw strings; absent fields
// are left out. Unknown fields are ignored on reading.
[[nodiscard]] JsonValue toJson(const PatchingReceipt& receipt);
[[nodiscard]] Result<PatchingReceipt> receiptFromJson(const JsonValue& value);
[[nodiscard]] JsonValue toJson(const DeferralEventRecord& event);
[[nodiscard]] Result<DeferralEventRecord> deferralEventFromJson(const JsonValue& value);

}  // namespace corvane
