#include "notifier/notifier_options.h"

#include "notifications/base64.h"
#include "support/test.h"

namespace corvane {
namespace {

TEST(NotifierOptions, takeExactlyOneRequest) {
  const PersistentNotificationRequest request{.identifier = "a", .title = "Title"};
  const auto encoded = request.encoded();
  const std::vector<const char*> right = {"--request", encoded.c_str()};
  const auto options = NotifierOptions::parse(right);
  ASSERT_TRUE(options);
  EXPECT_EQ(options->request, request);
  EXPECT_EQ(options->encodedRequest, encoded);

  const std::vector<std::vector<const char*>> wrong = {{},
                                                       {"--request"},
                                                       {encoded.c_str()},
                                                       {encoded.c_str(), "--request"},
                                                       {"--help", encoded.c_str()},
                                                       {"--request", encoded.c_str(), "--verbose"}};
  for (const auto& arguments : wrong) {
    const auto refused = NotifierOptions::parse(arguments);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, NotifierOptions::wrongUsage);
    EXPECT_EQ(refused.error().text, "usage: \"Corvane Notification\" --request <base64>");
  }
}

TEST(NotifierOptions, refuseWhatIsNoRequest) {
  for (const std::string& text : {std::string(), std::string("%%%"), base64("{"), base64(R"({"operation":"post"})"),
                                  PersistentNotificationRequest{}.encoded()}) {
    const std::vector<const char*> arguments = {"--request", text.c_str()};
    const auto refused = NotifierOptions::parse(arguments);
    ASSERT_FALSE(refused) << text;
    EXPECT_EQ(refused.error().code, NotifierOptions::badRequest) << text;
  }
}

TEST(ApplicationArguments, onlyTheKnownIntentIsALink) {
  EXPECT_THAT(applicationArguments({{"intent", "showDeferralPrompt"}, {"more", "x"}}),
              ElementsAre("corvane://show-deferral-prompt"));
  EXPECT_THAT(applicationArguments({}), IsEmpty());
  EXPECT_THAT(applicationArguments({{"intent", "--generate-diagnostic-bundle"}}), IsEmpty());
}

}  // namespace
}  // namespace corvane
