#include "core/records/history_records.h"

#include "core/records/json_fields.h"

namespace corvane {

JsonValue toJson(const PatchingReceipt& receipt) {
  JsonObject object{
      {"label", receipt.label.text}, {"timestamp", iso8601Utc(receipt.timestamp)}, {"status", rawName(receipt.status)}};
  setIfPresent(object, "version", receipt.version);
  setIfPresent(object, "targetVersion", receipt.targetVersion);
  object.set("installomatorExitCode", receipt.installomatorExitCode);
  setIfPresent(object, "usedStagedInstaller", receipt.usedStagedInstaller);
  return object;
}

Result<PatchingReceipt> receiptFromJson(const JsonValue& value) {
  JsonFieldReader fields(value, "PatchingReceipt");
  return fields.finish(PatchingReceipt{.label = fields.label("label"),
                                       .timestamp = fields.isoDate("timestamp"),
                                       .status = fields.oneOf<PatchingStatus>("status"),
                                       .version = fields.optionalText("version"),
                                       .targetVersion = fields.optionalText("targetVersion"),
                                       .installomatorExitCode = fields.integer("installomatorExitCode"),
                                       .usedStagedInstaller = fields.optionalFlag("usedStagedInstaller")});
}

JsonValue toJson(const DeferralEventRecord& event) {
  JsonObject object{{"id", event.id.text()},
                    {"label", event.label.text},
                    {"appName", event.appName},
                    {"eventType", rawName(event.eventType)},
                    {"timestamp", iso8601Utc(event.timestamp)}};
  setIfPresent(object, "deferralMinutes", event.deferralMinutes);
  if (event.escalation) object.set("escalation", rawName(*event.escalation));
  return object;
}

Result<DeferralEventRecord> deferralEventFromJson(const JsonValue& value) {
  JsonFieldReader fields(value, "DeferralEventRecord");
  const auto id = Uuid::parse(fields.text("id"));
  if (!id) fields.fail("id", "is no UUID");
  return fields.finish(DeferralEventRecord{.id = id.value_or(Uuid{}),
                                           .label = fields.label("label"),
                                           .appName = fields.text("appName"),
                                           .eventType = fields.oneOf<DeferralEventType>("eventType"),
                                           .timestamp = fields.isoDate("timestamp"),
                                           .deferralMinutes = fields.optionalInteger("deferralMinutes"),
                                           .escalation = fields.optionalOneOf<DeferralEscalation>("escalation")});
}

}  // namespace corvane
