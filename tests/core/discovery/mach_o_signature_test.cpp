#include "core/discovery/mach_o_signature.h"

#include "core/discovery/mac_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

using mach_o::Architecture;
using mach_o::FatHeader;
using mach_o::HashType;

const mach_o::Signing kQuill{.identifier = "org.example.quill", .team = "ABCDE12345"};
const mach_o::Signing kOther{.identifier = "org.example.other", .team = "ZZZZZ99999"};

struct MachOSignature : ::testing::Test {
  Result<CodeSignature> read(std::string_view bytes, SignatureDetail detail = SignatureDetail::namesAndHash) {
    return readMachOSignature(mac_.write("/program", bytes), detail);
  }
  int codeOf(std::string_view bytes) {
    const auto signature = read(bytes);
    return signature ? 0 : signature.error().code;
  }
  testing::MacFolder mac_;
};

TEST_F(MachOSignature, readsThinFilesOfBothByteOrders) {
  for (const bool big : {false, true}) {
    const mach_o::ThinOptions options{.codeBytes = 9000, .bigEndian = big};
    const auto signature = read(mach_o::thin({kQuill}, options));
    ASSERT_TRUE(signature) << signature.error().text;
    EXPECT_EQ(signature->identifier, kQuill.identifier);
    EXPECT_EQ(signature->teamIdentifier, kQuill.team);
    EXPECT_EQ(signature->cdhash, mach_o::cdhash(kQuill, mach_o::unsignedThin(options)));
  }
  const auto names = read(mach_o::thin({kQuill}, {.codeBytes = 5U << 20U}), SignatureDetail::names);
  ASSERT_TRUE(names);
  EXPECT_EQ(names->teamIdentifier, kQuill.team);
  EXPECT_EQ(names->cdhash, std::nullopt);
}

TEST_F(MachOSignature, takesTheArmSliceOfUniversalFiles) {
  const auto arm = mach_o::thin({kQuill}, {.architecture = Architecture::arm64});
  const auto intel = mach_o::thin({kOther}, {.architecture = Architecture::x86_64, .codeBytes = 12000});
  for (const auto header : {FatHeader::bits32, FatHeader::bits64, FatHeader::swapped32}) {
    const auto both = read(mach_o::universal({{Architecture::x86_64, intel}, {Architecture::arm64, arm}}, header));
    ASSERT_TRUE(both) << both.error().text;
    EXPECT_EQ(both->teamIdentifier, kQuill.team);
    EXPECT_EQ(both->cdhash, mach_o::cdhash(kQuill, mach_o::unsignedThin({.architecture = Architecture::arm64})));
    const auto only = read(mach_o::universal({{Architecture::x86_64, intel}}, header));
    ASSERT_TRUE(only);
    EXPECT_EQ(only->teamIdentifier, kOther.team);
  }
}

TEST_F(MachOSignature, theStrongestHashCountsAndAdHocHasNoTeam) {
  auto weak = kQuill;
  weak.hash = HashType::sha1;
  const auto code = mach_o::unsignedThin();
  EXPECT_EQ(read(mach_o::thin({weak}))->cdhash, mach_o::cdhash(weak, code));
  EXPECT_EQ(read(mach_o::thin({weak, kQuill}))->cdhash, mach_o::cdhash(kQuill, code));
  EXPECT_EQ(read(mach_o::thin({kQuill, weak}))->cdhash, mach_o::cdhash(kQuill, code));
  const auto both = read(mach_o::thin({kQuill, kOther}));
  EXPECT_EQ(both->teamIdentifier, kQuill.team) << "the names are those of the hash";
  EXPECT_EQ(both->cdhash, mach_o::cdhash(kQuill, code));
  const auto adHoc = read(mach_o::thin({{.identifier = "quill-5", .team = ""}}));
  ASSERT_TRUE(adHoc);
  EXPECT_EQ(adHoc->identifier, "quill-5");
  EXPECT_EQ(adHoc->teamIdentifier, std::nullopt);
}

TEST_F(MachOSignature, readsACodeDirectoryOfItsOwn) {
  const auto bytes = mach_o::codeDirectory(kQuill, "#!/bin/sh\n");
  const auto signature = readCodeDirectory(bytes + "padding", SignatureDetail::namesAndHash);
  ASSERT_TRUE(signature);
  EXPECT_EQ(signature->teamIdentifier, kQuill.team);
  EXPECT_EQ(signature->cdhash, mach_o::cdhash(kQuill, "#!/bin/sh\n"));
  for (std::size_t i = 0; i < bytes.size(); ++i)
    EXPECT_FALSE(readCodeDirectory(bytes.substr(0, i), SignatureDetail::namesAndHash)) << i;
}

TEST_F(MachOSignature, tellsWhyThereIsNone) {
  EXPECT_EQ(codeOf(""), SignatureError::notMachO);
  EXPECT_EQ(codeOf("#!/bin/sh\n"), SignatureError::notMachO);
  EXPECT_EQ(codeOf(std::string("\xca\xfe\xba\xbe\0\0\0\x41", 8) + std::string(100, 'x')), SignatureError::notMachO)
      << "a Java class";
  EXPECT_EQ(codeOf(mach_o::thin({})), SignatureError::notSigned);
  EXPECT_EQ(codeOf(mach_o::withSignature(mach_o::unsignedThin(), "not a signature")), SignatureError::damaged);
  const auto missing = readMachOSignature(mac_.root / "nothing");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().domain, "CRVFiles");
  EXPECT_FALSE(readMachOSignature(mac_.root));
}

}  // namespace
}  // namespace corvane
