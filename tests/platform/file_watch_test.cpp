#include "platform/uv/uv_file_watch.h"

#include "support/real_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {

struct UvFileWatchTest : ::testing::Test {
  [[nodiscard]] Lease watch(const std::filesystem::path& folder) {
    return watch_.watch(folder, [this] { ++heard_; });
  }
  int heard() {
    loop_.look();
    return std::exchange(heard_, 0);
  }
  void makeFolder(const std::string& name) const { std::filesystem::create_directories(root() / name); }
  void remove(const std::string& name) const { std::filesystem::remove_all(root() / name); }
  [[nodiscard]] const std::filesystem::path& root() const { return folder_.path(); }

  TemporaryFolder folder_;
  RealLoop loop_;
  UvFileWatch watch_{loop_.loop(), loop_.mainQueue()};
  int heard_ = 0;
};

TEST_F(UvFileWatchTest, AnyChangeInTheFolderIsToldInALaterTurn) {
  const auto lease = watch(root());
  EXPECT_EQ(heard(), 0) << "watching is no change";
  folder_.write("file", "one");
  EXPECT_EQ(heard_, 0);
  EXPECT_EQ(heard(), 1) << "made and written: once for all events of a turn";
  folder_.write("file", "two");
  EXPECT_EQ(heard(), 1);
  std::filesystem::rename(root() / "file", root() / "other");
  EXPECT_EQ(heard(), 1);
  remove("other");
  EXPECT_EQ(heard(), 1);
  EXPECT_EQ(heard(), 0);
}

TEST_F(UvFileWatchTest, WhatHappensBesideOrDeeperIsNotTold) {
  makeFolder("watched/inner");
  const auto lease = watch(root() / "watched");
  folder_.write("beside", "x");
  folder_.write("watched/inner/deep", "x");
  EXPECT_EQ(heard(), 0);
}

TEST_F(UvFileWatchTest, AFolderThatIsNotThereIsAwaited) {
  const auto lease = watch(root() / "a/b/c");
  folder_.write("beside", "x");
  EXPECT_EQ(heard(), 0);
  makeFolder("a");
  EXPECT_EQ(heard(), 0) << "a part of the way is no change";
  folder_.write("a/beside", "x");
  EXPECT_EQ(heard(), 0);
  makeFolder("a/b/c");
  EXPECT_EQ(heard(), 1) << "two levels at once";
  folder_.write("a/b/c/file", "x");
  EXPECT_EQ(heard(), 1);
}

TEST_F(UvFileWatchTest, AFolderMayGoAndComeBack) {
  makeFolder("a/b");
  const auto lease = watch(root() / "a/b");
  remove("a");
  EXPECT_GE(heard(), 1) << "its going is a change";
  makeFolder("a/b");
  EXPECT_EQ(heard(), 1) << "and so is its coming";
  folder_.write("a/b/file", "x");
  EXPECT_EQ(heard(), 1);
}

TEST_F(UvFileWatchTest, AFolderThatWasExchangedIsFollowed) {
  makeFolder("new");
  makeFolder("old");
  const auto lease = watch(root() / "old");
  std::filesystem::rename(root() / "old", root() / "away");
  std::filesystem::rename(root() / "new", root() / "old");
  EXPECT_GE(heard(), 1);
  folder_.write("old/file", "x");
  EXPECT_EQ(heard(), 1) << "the folder of that name, not the one that once had it";
  folder_.write("away/file", "x");
  EXPECT_EQ(heard(), 0);
}

TEST_F(UvFileWatchTest, ADeadLeaseSilencesWhatIsUnderWay) {
  for (int turns = 0; turns < 3; ++turns) {
    auto lease = watch(root());
    folder_.write("file", "x");
    for (int i = 0; i < turns; ++i) loop_.turn();
    heard_ = 0;
    lease.release();
    folder_.write("file", "y");
    EXPECT_EQ(heard(), 0) << turns;
  }
}

TEST_F(UvFileWatchTest, TheListenerMayEndItsOwnWatch) {
  Lease lease;
  lease = watch_.watch(root(), [&] {
    ++heard_;
    lease.release();
  });
  folder_.write("file", "x");
  EXPECT_EQ(heard(), 1);
  folder_.write("file", "y");
  EXPECT_EQ(heard(), 0);
}

TEST_F(UvFileWatchTest, WatchesOfOneFolderAreIndependent) {
  auto first = watch(root());
  const auto second = watch(root());
  folder_.write("file", "x");
  EXPECT_EQ(heard(), 2);
  first.release();
  folder_.write("file", "y");
  EXPECT_EQ(heard(), 1);
}

}  // namespace corvane::testing
