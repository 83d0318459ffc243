// The small services of a POSIX machine: the session's lock, the own bundle, chance.
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "base/plist.h"
#include "platform/posix/executable_bundle.h"
#include "platform/posix/instance_lock.h"
#include "platform/posix/process_application.h"
#include "platform/posix/system_entropy.h"
#include "platform/scripted/scripted_entropy.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {

TEST(InstanceLockTest, OneHoldsAndTheNextGetsItWhenTheProcessEndsHowever) {
  TemporaryFolder folder;
  const auto path = folder.path() / "Library/Application Support/Corvane/gui.instance.lock";
  InstanceLock lock(path);
  EXPECT_EQ(lock.takeExisting().outcome, SessionLock::Outcome::couldNotOpen);

  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const auto holder = ::fork();
  if (holder == 0) {
    InstanceLock held(path);
    const char answer = held.take().outcome == SessionLock::Outcome::taken ? 'y' : 'n';
    static_cast<void>(::write(ready[1], &answer, 1));
    ::pause();
  }
  char answer = 0;
  ASSERT_EQ(::read(ready[0], &answer, 1), 1);
  EXPECT_EQ(answer, 'y');
  EXPECT_EQ(lock.take().outcome, SessionLock::Outcome::heldByOther);
  EXPECT_EQ(lock.takeExisting().outcome, SessionLock::Outcome::heldByOther);
  ::kill(holder, SIGKILL);
  ::waitpid(holder, nullptr, 0);
  EXPECT_EQ(lock.takeExisting().outcome, SessionLock::Outcome::taken);
  EXPECT_EQ(lock.take().outcome, SessionLock::Outcome::taken);
  EXPECT_EQ(InstanceLock(path).take().outcome, SessionLock::Outcome::heldByOther);
}

TEST(InstanceLockTest, SharedHoldersKeepOutWhoWantsItAloneAndWaitForHim) {
  TemporaryFolder folder;
  const auto path = folder.path() / "Corvane/state.lock";
  InstanceLock shared(path);
  {
    auto alone = std::make_unique<InstanceLock>(path);
    ASSERT_EQ(alone->take().outcome, SessionLock::Outcome::taken);
    EXPECT_EQ(shared.takeShared().outcome, SessionLock::Outcome::heldByOther);
    const std::jthread waiting([&] { EXPECT_EQ(shared.awaitShared().outcome, SessionLock::Outcome::taken); });
    alone.reset();
  }
  EXPECT_EQ(InstanceLock(path).takeShared().outcome, SessionLock::Outcome::taken);
  EXPECT_EQ(InstanceLock(path).take().outcome, SessionLock::Outcome::heldByOther);
}

TEST(InstanceLockTest, FailuresSayWhatTheSystemSays) {
  TemporaryFolder folder;
  folder.write("file", "");
  const auto noFolder = InstanceLock(folder.path() / "file/below/lock").take();
  EXPECT_EQ(noFolder.outcome, SessionLock::Outcome::couldNotMakeFolder);
  EXPECT_FALSE(noFolder.error.empty());
  std::filesystem::create_directories(folder.path() / "lock");
  const auto noFile = InstanceLock(folder.path() / "lock").take();
  EXPECT_EQ(noFile.outcome, SessionLock::Outcome::couldNotOpen);
  EXPECT_FALSE(noFile.error.empty());
}

TEST(ExecutableBundleTest, VersionsAndDigestFollowTheirFiles) {
  TemporaryFolder folder;
  const auto bundlePath = folder.path() / "Corvane.app";
  const ExecutableBundle bundle(bundlePath / "Contents/MacOS/Corvane");
  EXPECT_EQ(bundle.path(), bundlePath);
  EXPECT_FALSE(bundle.shortVersion().has_value());
  EXPECT_EQ(bundle.identifier(), "");
  EXPECT_FALSE(bundle.helperDigest().has_value());

  folder.write("Corvane.app/Contents/Info.plist",
               writePlist(PlistValue(PlistDict{{"CFBundleIdentifier", "org.corvane.Corvane"},
                                               {"CFBundleShortVersionString", "4.1"},
                                               {"CFBundleVersion", "410"}}),
                          PlistFormat::xml)
                   .value());
  EXPECT_EQ(bundle.shortVersion(), "4.1");
  EXPECT_EQ(bundle.version(), "410");
  EXPECT_EQ(bundle.identifier(), "org.corvane.Corvane");

  folder.write("Corvane.app/Contents/Helpers/CorvaneRootHelper", "abc");
  EXPECT_EQ(bundle.helperDigest(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  folder.write("Corvane.app/Contents/Helpers/CorvaneRootHelper", "");
  EXPECT_EQ(bundle.helperDigest(), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(ExecutableBundleTest, OutsideABundleTheFolderStandsForIt) {
  const ExecutableBundle bundle("/build/src/programs/Corvane");
  EXPECT_EQ(bundle.path(), "/build/src/programs");
  EXPECT_EQ(ExecutableBundle().path(), ExecutableBundle::runningExecutable().parent_path());
}

TEST(ProcessApplicationTest, TheBadgeIsPassedOnWhenItChanges) {
  std::vector<std::optional<std::string>> shown;
  ProcessApplication application([&](const auto& label) { shown.push_back(label); });
  EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
  for (const auto& label : {std::optional<std::string>("3"), std::optional<std::string>("3"), {}})
    application.setBadge(label);
  EXPECT_THAT(shown, ::testing::ElementsAre("3", std::nullopt));
}

template <class T>
class EntropyContract : public ::testing::Test {};
using Entropies = ::testing::Types<SystemEntropy, ScriptedEntropy>;
TYPED_TEST_SUITE(EntropyContract, Entropies);

TYPED_TEST(EntropyContract, ValuesStayBelowTheBoundAndIdentifiersDiffer) {
  TypeParam entropy;
  EXPECT_EQ(entropy.below(0), 0U);
  EXPECT_EQ(entropy.below(1), 0U);
  std::set<std::uint64_t> seen;
  for (int i = 0; i < 200; ++i) seen.insert(entropy.below(5));
  EXPECT_EQ(seen, (std::set<std::uint64_t>{0, 1, 2, 3, 4}));
  std::set<std::string> identifiers;
  for (int i = 0; i < 100; ++i) {
    const auto text = entropy.uuid().text();
    EXPECT_EQ(text[14], '4');
    EXPECT_THAT(std::string("89AB"), HasSubstr(text.substr(19, 1)));
    identifiers.insert(text);
  }
  EXPECT_EQ(identifiers.size(), 100U);
}

}  // namespace corvane::testing
