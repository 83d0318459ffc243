#include "helper/saved_apps.h"

#include "support/scripted_preferences.h"
#include "support/test.h"

namespace corvane {
namespace {

struct SavedAppsTest : ::testing::Test, testing::ScriptedPreferences {};

TEST_F(SavedAppsTest, AreParsedOnceForEachStateOfThePreferences) {
  SavedApps saved{domains, preferences};
  const auto store = [&](std::string text, const char* title) {
    domains.setUser({{"DiscoveredAppsData", PlistData{std::move(text)}}, {"AppTitle", title}});
  };
  EXPECT_TRUE(saved.current()->empty());

  AppInfo quill;
  quill.label = Label("quill");
  store(writeJson(toJson(Apps{quill})), "one");
  const auto first = saved.current();
  ASSERT_EQ(first->size(), 1U);
  EXPECT_EQ(first->front().label, Label("quill"));
  EXPECT_EQ(saved.current(), first) << "the very same list";

  store(writeJson(toJson(Apps{quill, quill})), "two");
  EXPECT_EQ(saved.current()->size(), 2U);
  EXPECT_EQ(first->size(), 1U) << "a scan keeps the list that it began with";

  store("{torn", "three");
  EXPECT_TRUE(saved.current()->empty());
  EXPECT_EQ(saved.current(), saved.current()) << "damage is not read again and again either";

  domains.setManaged({{"DiscoveredAppsData", PlistData{writeJson(toJson(Apps{quill}))}}});
  EXPECT_EQ(saved.current()->size(), preferences.readDiscoveredApps().value_or(Apps{}).size());
}

}  // namespace
}  // namespace corvane
