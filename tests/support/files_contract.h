// What every answer to the Files port does. Instantiate with a world that has `files()` and `folder()`, an
// existing empty folder.
#pragma once

#include <cerrno>

#include "platform/files.h"
#include "support/test.h"

namespace corvane::testing {

template <class World>
struct FilesContract : ::testing::Test {
  World world_;
};
TYPED_TEST_SUITE_P(FilesContract);

TYPED_TEST_P(FilesContract, WhatWasWrittenIsReadAndReplacedWhole) {
  Files& files = this->world_.files();
  const auto file = this->world_.folder() / "state.json";
  const auto missing = files.read(file).error();
  EXPECT_EQ(missing.code, ENOENT);
  EXPECT_EQ(missing.domain, "CRVFiles");
  EXPECT_THAT(missing.text, ::testing::HasSubstr(file.string()));
  EXPECT_FALSE(files.exists(file));
  EXPECT_FALSE(files.size(file).has_value());
  ASSERT_TRUE(files.replace(file, "a long first value", 0644));
  ASSERT_TRUE(files.replace(file, "second", 0644));
  EXPECT_EQ(files.read(file).value(), "second");
  EXPECT_EQ(files.size(file), 6U);
  EXPECT_TRUE(files.exists(file));
  EXPECT_TRUE(files.modified(file).has_value());
}

TYPED_TEST_P(FilesContract, AppendingMakesTheFileAndKeepsWhatStood) {
  Files& files = this->world_.files();
  const auto file = this->world_.folder() / "receipts.jsonl";
  ASSERT_TRUE(files.append(file, "one\n", 0644));
  ASSERT_TRUE(files.append(file, "two\n", 0644));
  EXPECT_EQ(files.read(file).value(), "one\ntwo\n");
}

TYPED_TEST_P(FilesContract, TheEndOfAFileIsRead) {
  const auto path = this->world_.folder() / "end";
  ASSERT_TRUE(this->world_.files().append(path, "0123456789", 0644));
  const std::pair<std::size_t, std::string_view> ends[] = {{0, ""}, {1, "9"}, {10, "0123456789"}, {11, "0123456789"}};
  for (const auto& [limit, end] : ends) EXPECT_EQ(this->world_.files().readEnd(path, limit).value(), end) << limit;
  const auto missing = this->world_.files().readEnd(this->world_.folder() / "none", 1);
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().code, ENOENT);
}

TYPED_TEST_P(FilesContract, NothingIsWrittenIntoAFolderThatIsMissing) {
  Files& files = this->world_.files();
  const auto folder = this->world_.folder() / "a/b";
  EXPECT_EQ(files.replace(folder / "file", "x", 0644).error().code, ENOENT);
  EXPECT_EQ(files.append(folder / "file", "x", 0644).error().code, ENOENT);
  ASSERT_TRUE(files.makeFolders(folder));
  ASSERT_TRUE(files.makeFolders(folder));
  EXPECT_TRUE(files.exists(folder));
  EXPECT_TRUE(files.append(folder / "file", "x", 0644));
}

TYPED_TEST_P(FilesContract, AFileInTheWayOfAFolderIsToldAndKept) {
  Files& files = this->world_.files();
  const auto file = this->world_.folder() / "plain";
  ASSERT_TRUE(files.replace(file, "kept", 0644));
  EXPECT_FALSE(files.makeFolders(file / "below"));
  EXPECT_FALSE(files.makeFolders(file));
  EXPECT_EQ(files.read(file).value(), "kept");
}

TYPED_TEST_P(FilesContract, RenamingReplacesAndRemovingRemoves) {
  Files& files = this->world_.files();
  const auto from = this->world_.folder() / "from";
  const auto to = this->world_.folder() / "to";
  EXPECT_EQ(files.rename(from, to).error().code, ENOENT);
  EXPECT_EQ(files.remove(from).error().code, ENOENT);
  ASSERT_TRUE(files.replace(from, "new", 0644));
  ASSERT_TRUE(files.replace(to, "old", 0644));
  ASSERT_TRUE(files.rename(from, to));
  EXPECT_FALSE(files.exists(from));
  EXPECT_EQ(files.read(to).value(), "new");
  ASSERT_TRUE(files.remove(to));
  EXPECT_FALSE(files.exists(to));
}

REGISTER_TYPED_TEST_SUITE_P(FilesContract, WhatWasWrittenIsReadAndReplacedWhole, AppendingMakesTheFileAndKeepsWhatStood,
                            TheEndOfAFileIsRead, NothingIsWrittenIntoAFolderThatIsMissing,
                            AFileInTheWayOfAFolderIsToldAndKept, RenamingReplacesAndRemovingRemoves);

}  // namespace corvane::testing
