#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "core/discovery/mach_o_signature.h"
#include "fuzz/hostile_inputs.h"
#include "sample/mach_o_builder.h"

namespace corvane::testing {

namespace {

class MemoryFile {
 public:
  MemoryFile() : descriptor_(::memfd_create("program", MFD_CLOEXEC)) {}
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] int holding(std::string_view bytes) const {
    EXPECT_EQ(::ftruncate(descriptor_, 0), 0);
    EXPECT_EQ(::pwrite(descriptor_, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    return descriptor_;
  }

 private:
  int descriptor_;
};

bool isSound(const Result<CodeSignature>& signature, const std::string& bytes) {
  if (!signature) {
    EXPECT_EQ(signature.error().domain, SignatureError::domain);
    EXPECT_FALSE(signature.error().text.empty());
    return false;
  }
  EXPECT_NE(bytes.find(signature->identifier), std::string::npos);
  EXPECT_NE(bytes.find(signature->teamIdentifier.value_or("")), std::string::npos);
  if (signature->cdhash) {
    EXPECT_EQ(signature->cdhash->size(), 40U);
    EXPECT_EQ(signature->cdhash->find_first_not_of("0123456789abcdef"), std::string::npos);
  }
  return true;
}

bool taken(const std::string& bytes) {
  const MemoryFile file;
  const auto whole = readMachOSignature(file.holding(bytes), SignatureDetail::namesAndHash);
  const auto names = readMachOSignature(file.holding(bytes), SignatureDetail::names);
  EXPECT_TRUE(names || !whole) << "the names need less than the hash";
  if (names && whole) {
    EXPECT_EQ(names->identifier, whole->identifier);
    EXPECT_EQ(names->teamIdentifier, whole->teamIdentifier);
    EXPECT_EQ(names->cdhash, std::nullopt);
  }
  isSound(names, bytes);
  return isSound(whole, bytes);
}

Corpus withBuiltPrograms(Corpus corpus) {
  using namespace mach_o;
  const Signing team{.identifier = "org.example.quill", .team = "TEAM123456"};
  const Signing old{.identifier = "org.example.quill", .team = "TEAM123456", .hash = HashType::sha1};
  corpus["good-thin"] = thin({team});
  corpus["good-two-hashes"] = thin({old, team});
  corpus["good-big-endian"] = thin({team}, {.bigEndian = true});
  const std::vector<Slice> slices = {{Architecture::x86_64, thin({old}, {.architecture = Architecture::x86_64})},
                                     {Architecture::arm64, thin({team})}};
  corpus["good-universal"] = universal(slices);
  corpus["good-universal-64"] = universal(slices, FatHeader::bits64);
  corpus["bad-unsigned"] = thin({});
  return corpus;
}

}  // namespace

TEST(MachOFuzz, theCorpusIsJudgedRightly) { replay(withBuiltPrograms(corpusOf("mach_o")), taken); }

TEST(MachOFuzz, damageNeverCrashesAndNothingIsMadeUp) {
  HostileInputs inputs(withBuiltPrograms(corpusOf("mach_o")),
                       {"\xfe\xed\xfa\xcf", "\xca\xfe\xba\xbe", "\xca\xfe\xba\xbf", "\xfa\xde\x0c\xc0",
                        "\xfa\xde\x0c\x02", std::string("\x1d\0\0\0\x10\0\0\0", 8), std::string(8, '\0')});
  bombard(std::move(inputs), 2000, 100, taken);
}

TEST(MachOFuzz, codeDirectoriesOfTheirOwnAreHeldToTheSame) {
  const mach_o::Signing team{.identifier = "org.example.quill", .team = "TEAM123456"};
  HostileInputs inputs({{"directory", mach_o::codeDirectory(team, "the code")}}, {std::string(4, '\0'), "\xff"});
  bombard(std::move(inputs), 2000, 10, [](const std::string& bytes) {
    return isSound(readCodeDirectory(bytes, SignatureDetail::namesAndHash), bytes);
  });
}

}  // namespace corvane::testing
