#include "base/atomic_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

struct AtomicFileTest : ::testing::Test {
  [[nodiscard]] auto entries() const { return std::distance(fs::directory_iterator(folder), {}); }

  testing::TemporaryFolder temporary;
  fs::path folder = temporary.path();
};

TEST_F(AtomicFileTest, ReplacesContentAndModeAndLeavesNothingElse) {
  const auto path = folder / "state.json";
  ASSERT_TRUE(writeFileAtomically(path, "old"));
  const std::string bytes("new\0bytes", 9);
  ASSERT_TRUE(writeFileAtomically(path, bytes, 0600));
  EXPECT_EQ(readFile(path), bytes);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFileTest, AFailureLeavesTheOldAndNoTemporaryFile) {
  const auto target = folder / "state";
  fs::create_directories(target / "inside");
  const auto status = writeFileAtomically(target, "bytes");
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().domain, "CRVFiles");
  EXPECT_EQ(status.error().code, EISDIR);
  EXPECT_TRUE(fs::exists(target / "inside"));
  EXPECT_EQ(entries(), 1);
  EXPECT_EQ(writeFileAtomically(folder / "missing/state", "bytes").error().code, ENOENT);
}

TEST_F(AtomicFileTest, ReadingTellsWhatIsWrong) {
  EXPECT_EQ(readFile(folder / "none").error().code, ENOENT);
  EXPECT_EQ(readFile(folder).error().code, EISDIR);
  ASSERT_TRUE(writeFileAtomically(folder / "ten", "0123456789"));
  EXPECT_EQ(readFile(folder / "ten", 10), "0123456789");
  EXPECT_EQ(readFile(folder / "ten", 9).error().code, EFBIG);
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(readFile(folder / "pipe").error().code, EINVAL);
}

}  // namespace
}  // namespace corvane
