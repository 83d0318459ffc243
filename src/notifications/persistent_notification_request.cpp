#include "notifications/persistent_notification_request.h"

#include <utility>

#include "base/json.h"
#include "core/records/enumerations.h"
#include "core/records/json_fields.h"
#include "notifications/base64.h"

namespace corvane {

template <>
struct CaseNames<PersistentNotificationRequest::Operation> {
  using Operation = PersistentNotificationRequest::Operation;
  static constexpr auto all = std::to_array<CaseName<Operation>>({{Operation::post, "post", ""},
                                                                  {Operation::cancel, "cancel", ""},
                                                                  {Operation::clearDelivered, "clearDelivered", ""},
                                                                  {Operation::clearAll, "clearAll", ""}});
};

namespace {

constexpr auto kDomain = "CRVNotificationRequest";
constexpr int kNoBase64 = 1;
constexpr int kDamaged = 2;

Result<PersistentNotificationRequest> readRecord(const JsonValue& value) {
  JsonFieldReader fields(value, "notification request");
  PersistentNotificationRequest request{
      .operation = fields.oneOf<PersistentNotificationRequest::Operation>("operation"),
      .identifiers = fields.texts("identifiers"),
      .identifier = fields.optionalText("identifier"),
      .title = fields.optionalText("title"),
      .body = fields.optionalText("body"),
      .sound = fields.flag("sound"),
      .categoryIdentifier = fields.optionalText("categoryIdentifier"),
      .userInfo = fields.textMap("userInfo"),
      .fireDate = fields.optionalDateSince2001("fireDate"),
      .displayHeader = fields.optionalText("displayHeader"),
      .openActionTitle = fields.optionalText("openActionTitle")};
  // Stored words are read in any case; this one is no stored word.
  if (fields.text("operation") != rawName(request.operation)) fields.fail("operation", "holds no known value");
  return fields.finish(std::move(request));
}

}  // namespace

std::string PersistentNotificationRequest::encoded() const {
  JsonArray listed;
  for (const auto& one : identifiers) listed.emplace_back(one);
  JsonObject info;
  for (const auto& [key, value] : userInfo) info.set(key, value);

  JsonObject record{{"operation", rawName(operation)}, {"identifiers", std::move(listed)}};
  setIfPresent(record, "identifier", identifier);
  setIfPresent(record, "title", title);
  setIfPresent(record, "body", body);
  record.set("sound", sound);
  setIfPresent(record, "categoryIdentifier", categoryIdentifier);
  record.set("userInfo", std::move(info));
  if (fireDate) record.set("fireDate", secondsSince2001(*fireDate));
  setIfPresent(record, "displayHeader", displayHeader);
  setIfPresent(record, "openActionTitle", openActionTitle);
  return base64(writeJson(record));
}

Result<PersistentNotificationRequest> PersistentNotificationRequest::decode(std::string_view base64Text) {
  const auto bytes = bytesOfBase64(base64Text);
  if (!bytes) return failure(kDomain, kNoBase64, "the request is no base64");
  const auto value = parseJsonOfDistinctKeys(*bytes);
  if (!value) return failure(kDomain, kDamaged, "the request is no JSON: " + value.error().text);
  auto request = readRecord(*value);
  if (!request) return failure(kDomain, kDamaged, request.error().text);
  return request;
}

}  // namespace corvane
