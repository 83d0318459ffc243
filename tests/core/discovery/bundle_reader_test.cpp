// What is read of a bundle whose owner would like to have other files read.
#include "core/discovery/bundle_reader.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "core/discovery/folder_reader.h"
#include "core/discovery/mac_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

struct BundleReader : ::testing::Test {
  // Moves what lies at `path` in the bundle to `place` and leaves a link in its stead.
  void replaceByLink(const std::string& path, const std::filesystem::path& place, const std::string& link) const {
    std::filesystem::create_directories(place.parent_path());
    std::filesystem::rename(bundle / path, place);
    std::filesystem::create_symlink(link, bundle / path);
  }

  testing::MacFolder mac;
  std::filesystem::path bundle = mac.bundle("/Applications/quill.app", {.team = "ABCDE12345", .fromStore = true});
};

TEST_F(BundleReader, followsLinksThatStayInsideTheBundle) {
  replaceByLink("Contents/Info.plist", bundle / "Resources/Info.plist", "../Resources/Info.plist");
  replaceByLink("Contents/MacOS", bundle / "Versions/A/MacOS", "../Versions/Current/MacOS");
  replaceByLink("Contents/_MASReceipt", bundle / "Receipt", "../Receipt");
  std::filesystem::create_symlink("A", bundle / "Versions/Current");
  replaceByLink("Contents", bundle / "Inner", "Inner");
  const auto facts = readBundle(bundle);
  ASSERT_TRUE(facts) << facts.error().text;
  EXPECT_EQ(facts->properties.shortVersion, "1.0");
  ASSERT_TRUE(facts->signature) << facts->signatureProblem;
  EXPECT_TRUE(facts->hasStoreReceipt);
}

TEST_F(BundleReader, readsNothingThatALinkOutOfTheBundleLeadsTo) {
  const auto outside = mac.root / "private";
  replaceByLink("Contents/_MASReceipt", outside / "receipts", "../../../private/receipts");
  EXPECT_FALSE(readBundle(bundle)->hasStoreReceipt) << "what is elsewhere is not told";
  replaceByLink("Contents/MacOS", outside / "programs", (outside / "programs").string());
  EXPECT_FALSE(readBundle(bundle)->signature);
  mac.write("/private/CodeDirectory", mach_o::codeDirectory({.identifier = "x", .team = "ABCDE12345"}, "code"));
  std::filesystem::create_directory_symlink(outside, bundle / "Contents/_CodeSignature");
  EXPECT_FALSE(readBundle(bundle)->signature);
  replaceByLink("Contents/Info.plist", outside / "Info.plist", "../../../private/Info.plist");
  const auto facts = readBundle(bundle);
  ASSERT_FALSE(facts);
  EXPECT_THAT(facts.error().text, HasSubstr("Contents/Info.plist could not be read"));
}

class FolderReader : public BundleReader, public ::testing::WithParamInterface<BeneathBy> {};

TEST_P(FolderReader, keepsNamesBelowTheirFolder) {
  mac.write("/Applications/quill.app/plain", "inside");
  mac.write("/Applications/quill.app.other", "a neighbour whose name begins alike");
  mac.write("/outside", "outside");
  std::filesystem::create_symlink("Contents/../plain", bundle / "inner");
  std::filesystem::create_symlink("../../outside", bundle / "outer");
  std::filesystem::create_symlink("../quill.app.other", bundle / "neighbour");
  std::filesystem::create_symlink("/dev/null", bundle / "device");
  std::filesystem::create_symlink("nowhere", bundle / "dangling");
  std::filesystem::create_symlink("circle", bundle / "circle");
  ASSERT_EQ(::mkfifo((bundle / "pipe").c_str(), 0600), 0);
  const std::tuple<const char*, int, bool> rows[] = {{"plain", 0, true},          {"inner", 0, true},
                                                     {"outer", EXDEV, false},     {"neighbour", EXDEV, false},
                                                     {"device", EXDEV, false},    {"../../outside", EXDEV, false},
                                                     {"dangling", ENOENT, false}, {"circle", ELOOP, false},
                                                     {"pipe", ENOTSUP, true},     {"Contents", EISDIR, true}};
  const auto folder = Descriptor::openFolder(bundle);
  ASSERT_TRUE(folder);
  for (const auto& [name, problem, exists] : rows) {
    const auto file = Descriptor::openFileBeneath(folder->get(), name, GetParam());
    EXPECT_EQ(file ? 0 : file.error(), problem) << name;
    EXPECT_EQ(existsBeneath(folder->get(), name, GetParam()), exists) << name;
  }
}
INSTANTIATE_TEST_SUITE_P(ByTheKernelAndWithoutIt, FolderReader,
                         ::testing::Values(BeneathBy::kernel, BeneathBy::comparing));

}  // namespace
}  // namespace corvane
