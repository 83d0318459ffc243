#include "support/preference_domains_contract.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "base/atomic_file.h"
#include "platform/posix/posix_preference_domains.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/virtual_time.h"
#include "platform/uv/uv_file_watch.h"
#include "support/real_loop.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

namespace {

class RealWorld {
 public:
  RealWorld() { std::filesystem::create_directories(paths_.user.parent_path()); }
  PreferenceDomains& domains() { return domains_; }
  void writeUser(PlistDict values) { write(paths_.user, std::move(values)); }
  void writeManaged(PlistDict values) { write(paths_.managed, std::move(values)); }
  void settle() { loop_.look(); }

 private:
  static void write(const std::filesystem::path& path, PlistDict values) {
    std::filesystem::create_directories(path.parent_path());
    ASSERT_TRUE(writeFileAtomically(path, writePlist(PlistValue(std::move(values)), PlistFormat::xml).value()));
  }

  TemporaryFolder folder_;
  RealLoop loop_;
  UvFileWatch watch_{loop_.loop(), loop_.mainQueue()};
  PosixPreferenceDomains::Paths paths_{.user = folder_.path() / "home/Library/Preferences/d.plist",
                                       .managed = folder_.path() / "Library/Managed Preferences/d.plist"};
  PosixPreferenceDomains domains_{
      paths_, nullptr, [this](const auto& folder, auto changed) { return watch_.watch(folder, std::move(changed)); }};
};

class ScriptedWorld {
 public:
  PreferenceDomains& domains() { return domains_; }
  void writeUser(PlistDict values) { domains_.setUser(std::move(values)); }
  void writeManaged(PlistDict values) { domains_.setManaged(std::move(values)); }
  void settle() { machine_.runUntilIdle(); }

 private:
  VirtualMachine machine_;
  ScriptedPreferenceDomains domains_{machine_.main()};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, PreferenceDomainsContract, RealWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, PreferenceDomainsContract, ScriptedWorld);

struct PosixPreferenceDomainsTest : ::testing::Test {
  std::vector<std::string> filesInFolder() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
      names.push_back(entry.path().filename());
    return names;
  }

  TemporaryFolder folder_;
  std::vector<std::string> lines_;
  std::filesystem::path user_ = folder_.path() / "d.plist";
  PosixPreferenceDomains domains_{{.user = user_, .managed = folder_.path() / "managed.plist"},
                                  [this](std::string_view line) { lines_.emplace_back(line); }};
};

TEST_F(PosixPreferenceDomainsTest, TheFormAndTheModeOfTheFileAreKept) {
  ASSERT_TRUE(domains_.changeUser([](PlistDict& values) { values["A"] = 1; }));
  EXPECT_EQ(std::filesystem::status(user_).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(parsePlist(TemporaryFolder::read(user_))->format, PlistFormat::binary);

  folder_.write("d.plist", writePlist(PlistValue(PlistDict{{"A", 2}}), PlistFormat::xml).value());
  ASSERT_EQ(::chmod(user_.c_str(), 0640), 0);
  const auto before = domains_.user().version;
  ASSERT_TRUE(domains_.changeUser([](PlistDict& values) { values["B"] = true; }));
  ASSERT_TRUE(domains_.changeUser([](PlistDict& values) { values["C"] = Date(1'500ms); }));
  EXPECT_EQ(domains_.user().version, before + 2) << "the half second that text rounds is no other program's change";
  const auto written = parsePlist(TemporaryFolder::read(user_));
  EXPECT_EQ(written->format, PlistFormat::xml);
  EXPECT_EQ(*written->root.dict(), (PlistDict{{"A", 2}, {"B", true}, {"C", Date(2s)}}));
  EXPECT_EQ(std::filesystem::status(user_).permissions(), std::filesystem::perms(0640));
}

TEST_F(PosixPreferenceDomainsTest, ADamagedFileIsEmptyToldOnceAndSetAside) {
  for (const std::string_view damaged : {"bplist00 but not really", "<plist><array/></plist>", "<plist><dict><key>a"}) {
    lines_.clear();
    folder_.write("d.plist", damaged);
    EXPECT_TRUE(domains_.user().values->empty());
    EXPECT_TRUE(domains_.user().values->empty());
    ASSERT_EQ(lines_.size(), 1U) << damaged;
    EXPECT_THAT(lines_.front(), ::testing::HasSubstr(user_.string()));
    EXPECT_EQ(TemporaryFolder::read(user_), damaged) << "reading changes nothing";

    ASSERT_TRUE(domains_.changeUser([](PlistDict& values) { values["New"] = 1; }));
    EXPECT_EQ(*domains_.user().values, (PlistDict{{"New", 1}}));
  }
  std::vector<std::string> kept;
  for (const auto& name : filesInFolder())
    if (name.starts_with("d.plist.damaged-")) kept.push_back(TemporaryFolder::read(folder_.path() / name));
  EXPECT_THAT(kept, ::testing::UnorderedElementsAre("bplist00 but not really", "<plist><array/></plist>",
                                                    "<plist><dict><key>a"));
}

TEST_F(PosixPreferenceDomainsTest, ValuesThatHaveNoFormLeaveTheFileAsItWas) {
  ASSERT_TRUE(domains_.changeUser([](PlistDict& values) { values["A"] = 1; }));
  const auto before = TemporaryFolder::read(folder_.path() / "d.plist");
  PlistValue nested("x");
  for (int depth = 0; depth < 1000; ++depth) nested = PlistArray{nested};
  const auto changed = domains_.changeUser([&](PlistDict& values) { values["B"] = nested; });
  ASSERT_FALSE(changed);
  EXPECT_NE(changed.error().text.find("d.plist"), std::string::npos);
  EXPECT_EQ(TemporaryFolder::read(folder_.path() / "d.plist"), before);
  EXPECT_EQ(*domains_.user().values, (PlistDict{{"A", 1}}));
}

TEST_F(PosixPreferenceDomainsTest, AFileThatCannotBeReadIsLeftAloneAndFailsTheChange) {
  std::filesystem::create_directories(user_);
  EXPECT_TRUE(domains_.user().values->empty());
  EXPECT_EQ(lines_.size(), 1U);
  EXPECT_FALSE(domains_.changeUser([](PlistDict& values) { values["A"] = 1; }));
  EXPECT_TRUE(std::filesystem::is_directory(user_));
}

TEST_F(PosixPreferenceDomainsTest, RapidWritesOfEqualSizeAreAllSeen) {
  for (int i = 100; i < 200; ++i) {
    // In place, so that inode and size stay and only the kernel's slow time stamp could tell.
    folder_.write("d.plist", writePlist(PlistValue(PlistDict{{"A", i}}), PlistFormat::xml).value());
    EXPECT_EQ(domains_.user().values->at("A").integer(), i);
  }
}

TEST_F(PosixPreferenceDomainsTest, NoChangeIsLostBetweenProcessesAndThreads) {
  constexpr int kEach = 25;
  const auto count = [&](PosixPreferenceDomains& domains) {
    for (int i = 0; i < kEach; ++i)
      if (!domains.changeUser([](PlistDict& values) { values["N"] = values["N"].integer().value_or(0) + 1; }))
        return false;
    return true;
  };
  const auto child = ::fork();
  if (child == 0) ::_exit(count(domains_) ? 0 : 1);
  {
    std::jthread second([&] { EXPECT_TRUE(count(domains_)); });
    EXPECT_TRUE(count(domains_));
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(domains_.user().values->at("N").integer(), 3 * kEach);
}

}  // namespace corvane::testing
