#include "support/files_contract.h"

#include <sys/stat.h>

#include <thread>

#include "platform/posix/posix_files.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

namespace {

class RealWorld {
 public:
  Files& files() { return files_; }
  std::filesystem::path folder() { return folder_.path(); }

 private:
  TemporaryFolder folder_;
  PosixFiles files_;
};

class ScriptedWorld {
 public:
  ScriptedWorld() { static_cast<void>(files_.makeFolders("/Users/ann")); }
  Files& files() { return files_; }
  std::filesystem::path folder() { return "/Users/ann"; }

 private:
  VirtualMachine machine_;
  ScriptedFiles files_{machine_.clock()};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FilesContract, RealWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, FilesContract, ScriptedWorld);

TEST(PosixFilesTest, NewFilesHaveTheirModeAndLinesOfThreadsStayWhole) {
  TemporaryFolder folder;
  PosixFiles files;
  const auto file = folder.path() / "events.jsonl";
  {
    std::vector<std::jthread> writers;
    for (char c = 'a'; c < 'e'; ++c)
      writers.emplace_back([&, c] {
        for (int i = 0; i < 50; ++i) EXPECT_TRUE(files.append(file, std::string(200, c) + "\n", 0600));
      });
  }
  EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
  std::istringstream lines(TemporaryFolder::read(file));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) EXPECT_EQ(line, std::string(200, line.front()));
  EXPECT_EQ(count, 200);
}

}  // namespace corvane::testing
