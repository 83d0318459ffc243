#include "notifications/persistent_notification_request.h"

#include "notifications/base64.h"
#include "support/test.h"

namespace corvane {
namespace {

using Request = PersistentNotificationRequest;
using Operation = PersistentNotificationRequest::Operation;

std::string jsonOf(const Request& request) { return bytesOfBase64(request.encoded()).value_or("no base64"); }

TEST(PersistentNotificationRequest, isWrittenByteForByte) {
  const Request reminder{.operation = Operation::post,
                         .identifier = "crv.hardDeadlineReminder.30m",
                         .title = "Updates install in 30 minutes",
                         .body = "2 required updates — \"now\" or\nlater",
                         .sound = true,
                         .categoryIdentifier = "crv.updatesAvailable.category",
                         .userInfo = {{"intent", "showDeferralPrompt"}},
                         .fireDate = dateFromSecondsSince2001(815850000.25),
                         .displayHeader = "Corvane",
                         .openActionTitle = "Open Corvane"};
  EXPECT_EQ(jsonOf(reminder),
            R"({"operation":"post","identifiers":[],"identifier":"crv.hardDeadlineReminder.30m",)"
            R"("title":"Updates install in 30 minutes","body":"2 required updates — \"now\" or\nlater","sound":true,)"
            R"("categoryIdentifier":"crv.updatesAvailable.category","userInfo":{"intent":"showDeferralPrompt"},)"
            R"("fireDate":815850000.25,"displayHeader":"Corvane","openActionTitle":"Open Corvane"})");
  EXPECT_EQ(*Request::decode(reminder.encoded()), reminder);

  const Request cancel{.operation = Operation::cancel, .identifiers = {"a", "b"}};
  EXPECT_EQ(jsonOf(cancel), R"({"operation":"cancel","identifiers":["a","b"],"sound":false,"userInfo":{}})");
  EXPECT_EQ(*Request::decode(cancel.encoded()), cancel);

  EXPECT_EQ(Request{.operation = Operation::clearAll}.encoded(),
            "eyJvcGVyYXRpb24iOiJjbGVhckFsbCIsImlkZW50aWZpZXJzIjpbXSwic291bmQiOmZhbHNlLCJ1c2VySW5mbyI6e319");
  EXPECT_THAT(jsonOf({.operation = Operation::clearDelivered}), StartsWith(R"({"operation":"clearDelivered",)"));
}

TEST(PersistentNotificationRequest, isReadWithWhateverIsOptionalMissing) {
  const auto bare = Request::decode(base64(
      R"({"userInfo":{},"sound":true,"identifiers":[],"operation":"post","fireDate":12,"title":null,"more":1})"));
  ASSERT_TRUE(bare);
  EXPECT_EQ(*bare, (Request{.sound = true, .fireDate = dateFromSecondsSince2001(12)}));
}

TEST(PersistentNotificationRequest, refusesWhatIsNoRecord) {
  const char* const records[] = {
      "",
      "[]",
      R"({"operation":"post","identifiers":[],"sound":true)",
      R"({"identifiers":[],"sound":true,"userInfo":{}})",
      R"({"operation":"post","sound":true,"userInfo":{}})",
      R"({"operation":"post","identifiers":[],"userInfo":{}})",
      R"({"operation":"post","identifiers":[],"sound":true})",
      R"({"operation":"show","identifiers":[],"sound":true,"userInfo":{}})",
      R"({"operation":"cancel","identifiers":"a","sound":true,"userInfo":{}})",
      R"({"operation":"post","identifiers":[],"sound":1,"userInfo":{}})",
      R"({"operation":"post","identifiers":[],"sound":true,"userInfo":{"intent":1}})",
      R"({"operation":"post","identifiers":[],"sound":true,"userInfo":[]})",
      R"({"operation":"post","identifiers":[],"sound":true,"userInfo":{},"fireDate":"2026-11-01T12:00:00Z"})",
      R"({"operation":"post","identifiers":[],"sound":true,"userInfo":{},"fireDate":1e300})",
      R"({"operation":"post","identifiers":[],"sound":true,"userInfo":{},"title":7})",
      R"({"operation":"post","operation":"clearAll","identifiers":[],"sound":true,"userInfo":{}})",
  };
  for (const auto* record : records) EXPECT_FALSE(Request::decode(base64(record))) << record;
  EXPECT_EQ(Request::decode("nonsense!").error().text, "the request is no base64");
  EXPECT_EQ(Request::decode(base64(R"({"operation":"cancel","identifiers":[1],"sound":true})")).error().text,
            "notification request: field identifiers holds something that is no text");
}

TEST(Base64, isReadOnlyAsItIsWritten) {
  const std::pair<std::string, std::string> texts[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {std::string("\0\xff\xfe", 3), "AP/+"}};
  for (const auto& [bytes, text] : texts) {
    EXPECT_EQ(base64(bytes), text);
    EXPECT_EQ(bytesOfBase64(text), bytes) << text;
  }
  for (const auto* damaged : {"Zg", "Zg=", "Zh==", " Zm9v", "Zm9v\n", "Zm\n9v", "Zm9v====", "Z=9v", "====", "Zm9-"})
    EXPECT_EQ(bytesOfBase64(damaged), std::nullopt) << damaged;
  // Longer than what the library is given at once.
  const std::string large(7'000'001, '\x9d');
  EXPECT_EQ(bytesOfBase64(base64(large)), large);
}

}  // namespace
}  // namespace corvane
