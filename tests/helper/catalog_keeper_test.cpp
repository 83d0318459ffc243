#include "helper/catalog_keeper.h"

#include <utime.h>

#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

std::string fragment(const std::string& label, const std::string& version) {
  return label + ")\n    name=\"" + label + "\"\n    appNewVersion=\"" + version + "\"\n    ;;\n";
}

struct CatalogKeeperTest : ::testing::Test {
  CatalogKeeperTest() {
    folder_.write("quill.sh", fragment("quill", "1.0"));
    folder_.write("torn.sh", "torn)\n    name=\"Torn");
  }
  std::shared_ptr<const LabelCatalog> current() { return keeper_.current(folder_.path()).value(); }
  std::optional<std::string> version() { return current()->find(Label("quill"))->appNewVersion; }

  // The disk's stamps are the machine's; a clock a minute ahead finds them settled.
  VirtualMachine ahead_{std::chrono::time_point_cast<Duration>(std::chrono::system_clock::now()) + 1min};
  RecordingLog log_;
  testing::TemporaryFolder folder_;
  CatalogKeeper keeper_{ahead_.clock(), log_};
};

TEST_F(CatalogKeeperTest, KeepsTheCatalogueUntilAFileChangesInAnyWay) {
  const auto first = current();
  EXPECT_EQ(first->labels().size(), 1U);
  EXPECT_EQ(current(), first);

  const auto file = folder_.write("quill.sh", fragment("quill", "1.1"));
  EXPECT_EQ(version(), "1.1") << "in place, of the same length";
  utimbuf longAgo{.actime = 1, .modtime = 1};
  folder_.write("quill.sh", fragment("quill", "1.2"));
  ASSERT_EQ(utime(file.c_str(), &longAgo), 0);
  EXPECT_EQ(version(), "1.2") << "in place, its time set back";
  std::filesystem::rename(folder_.write("new", fragment("quill", "1.3")), file);
  EXPECT_EQ(version(), "1.3") << "replaced";
  folder_.write("zinnia.sh", fragment("zinnia", "9"));
  EXPECT_TRUE(current()->contains(Label("zinnia"))) << "added";
  std::filesystem::remove(folder_.path() / "zinnia.sh");
  EXPECT_FALSE(current()->contains(Label("zinnia"))) << "removed";
  EXPECT_TRUE(first->contains(Label("quill"))) << "who holds an old one goes on with it";
}

TEST_F(CatalogKeeperTest, DoesNotKeepWhatMayStillChangeWithinOneStamp) {
  VirtualMachine now(std::chrono::time_point_cast<Duration>(std::chrono::system_clock::now()));
  CatalogKeeper keeper(now.clock(), log_);
  const auto first = keeper.current(folder_.path()).value();
  EXPECT_NE(keeper.current(folder_.path()).value(), first);
}

TEST_F(CatalogKeeperTest, TellsADamagedFragmentOnceUntilItIsMended) {
  const auto told = [this] { return log_.count("torn.sh is left out"); };
  (void)current();
  EXPECT_EQ(told(), 1U);
  folder_.write("zinnia.sh", fragment("zinnia", "9"));
  (void)current();
  EXPECT_EQ(told(), 1U) << "another file changed";
  folder_.write("torn.sh", fragment("torn", "1"));
  (void)current();
  folder_.write("torn.sh", "torn)\n    name=\"Torn");
  (void)current();
  EXPECT_EQ(told(), 2U) << "it was well in between";
}

TEST_F(CatalogKeeperTest, AFolderThatIsGoneFailsAndComesBack) {
  const auto first = current();
  const auto labels = folder_.path() / "labels";
  std::filesystem::create_directory(labels);
  EXPECT_TRUE(keeper_.current(labels).value()->empty()) << "another folder is another catalogue";
  std::filesystem::remove(labels);
  EXPECT_EQ(keeper_.current(labels).error().code, ENOENT);
  EXPECT_EQ(current()->labels(), first->labels());
}

TEST(TroubleLogTest, TellsInformationAlwaysAndATroubleWhileItIsNew) {
  RecordingLog log;
  TroubleLog troubles(log);
  const auto round = [&](bool whole, std::initializer_list<const char*> warnings) {
    TroubleLog::Round now(troubles);
    now.write(LogLevel::info, "looked");
    for (const auto* text : warnings) now.write(LogLevel::warning, text);
    if (whole) now.sawEverything();
  };
  round(true, {"a", "b"});
  round(false, {"a"});
  round(true, {"a", "b"});
  EXPECT_EQ(log.count("a"), 1U);
  EXPECT_EQ(log.count("b"), 1U) << "a round that saw a part forgets nothing";
  round(true, {"a"});
  round(true, {"a", "b"});
  EXPECT_EQ(log.count("b"), 2U);
  EXPECT_EQ(log.count("looked"), 5U);
}

}  // namespace
}  // namespace corvane
