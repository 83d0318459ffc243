#include "sample/code_signature.h"

#include <openssl/sha.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace corvane::sample {

namespace {

constexpr std::size_t kPageSize = 4096;
constexpr std::size_t kPageSizeLog2 = 12;
constexpr std::size_t kSliceAlignmentLog2 = 14;
constexpr std::uint32_t kCodeDirectoryMagic = 0xfade0c02;
constexpr std::uint32_t kEmbeddedSignatureMagic = 0xfade0cc0;
constexpr std::uint32_t kCodeDirectoryHeader = 52;  // up to and with the team offset, which came with 0x20200
constexpr std::uint32_t kTextSize = 2 * kPageSize;

class Bytes {
 public:
  Bytes& big(std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) text_.push_back(static_cast<char>(value >> shift));
    return *this;
  }
  Bytes& little(std::uint32_t value) {
    for (int shift = 0; shift <= 24; shift += 8) text_.push_back(static_cast<char>(value >> shift));
    return *this;
  }
  Bytes& little64(std::uint64_t value) {
    return little(static_cast<std::uint32_t>(value)).little(static_cast<std::uint32_t>(value >> 32));
  }
  Bytes& byte(std::size_t value) {
    text_.push_back(static_cast<char>(value));
    return *this;
  }
  Bytes& text(std::string_view value) {
    text_ += value;
    return *this;
  }
  Bytes& padTo(std::size_t size) {
    text_.resize(std::max(text_.size(), size));
    return *this;
  }
  [[nodiscard]] std::size_t size() const { return text_.size(); }
  [[nodiscard]] std::string take() { return std::move(text_); }

 private:
  std::string text_;
};

std::uint32_t count32(std::size_t value) { return static_cast<std::uint32_t>(value); }

// The super blob with the code directory as its only slot.
std::string embeddedSignature(const std::string& directory) {
  constexpr std::uint32_t kHeader = 20;
  return Bytes()
      .big(kEmbeddedSignatureMagic)
      .big(kHeader + count32(directory.size()))
      .big(1)
      .big(0)
      .big(kHeader)
      .text(directory)
      .take();
}

void segment(Bytes& out, std::string_view name, std::uint64_t address, std::uint64_t offset, std::uint64_t size,
             std::uint32_t protection) {
  out.little(0x19).little(72);  // LC_SEGMENT_64
  out.text(name).padTo(out.size() + 16 - name.size());
  out.little64(address).little64((size + kPageSize - 1) / kPageSize * kPageSize).little64(offset).little64(size);
  out.little(protection).little(protection).little(0).little(0);
}

// Header, commands and an empty text of kTextSize bytes: all that the signature covers.
std::string machOImage(Processor processor, std::uint32_t signatureSize) {
  constexpr std::uint64_t kBase = 0x100000000;
  const bool isSigned = signatureSize > 0;
  Bytes out;
  out.little(0xfeedfacf);
  if (processor == Processor::arm64)
    out.little(0x0100000c).little(0);
  else
    out.little(0x01000007).little(3);
  out.little(2).little(isSigned ? 3 : 2).little(isSigned ? 160 : 144).little(0x00200085).little(0);
  segment(out, "__TEXT", kBase, 0, kTextSize, 5);
  segment(out, "__LINKEDIT", kBase + kTextSize, kTextSize, signatureSize, 1);
  if (isSigned) out.little(0x1d).little(16).little(kTextSize).little(signatureSize);  // LC_CODE_SIGNATURE
  return out.padTo(kTextSize).take();
}

}  // namespace

std::string codeDirectory(const Signer& signer, std::string_view code) {
  const auto pages = (code.size() + kPageSize - 1) / kPageSize;
  const auto teamOffset = kCodeDirectoryHeader + count32(signer.identifier.size()) + 1;
  const auto hashOffset = teamOffset + count32(signer.team.size()) + 1;
  Bytes out;
  out.big(kCodeDirectoryMagic).big(hashOffset + count32(pages) * SHA256_DIGEST_LENGTH).big(0x20200).big(0);
  out.big(hashOffset).big(kCodeDirectoryHeader).big(0).big(count32(pages)).big(count32(code.size()));
  out.byte(SHA256_DIGEST_LENGTH).byte(2).byte(0).byte(kPageSizeLog2);  // hash type 2: SHA-256
  out.big(0).big(0).big(teamOffset);
  out.text(signer.identifier).byte(0).text(signer.team).byte(0);
  for (std::size_t at = 0; at < code.size(); at += kPageSize) {
    const auto page = code.substr(at, kPageSize);
    std::array<unsigned char, SHA256_DIGEST_LENGTH> hash{};
    SHA256(reinterpret_cast<const unsigned char*>(page.data()), page.size(), hash.data());
    out.text({reinterpret_cast<const char*>(hash.data()), hash.size()});
  }
  return out.take();
}

std::string thinMachO(Processor processor, const Signer& signer) {
  if (signer.team.empty()) return machOImage(processor, 0);
  // The image names the size of its signature, whose own size depends on the image's size alone.
  const auto size = count32(embeddedSignature(codeDirectory(signer, machOImage(processor, 1))).size());
  const auto image = machOImage(processor, size);
  return image + embeddedSignature(codeDirectory(signer, image));
}

std::string universalMachO(const Signer& signer) {
  constexpr std::size_t kAlignment = 1U << kSliceAlignmentLog2;
  const auto intel = thinMachO(Processor::intel, signer);
  const auto arm = thinMachO(Processor::arm64, signer);
  const auto armAt = kAlignment + (intel.size() + kAlignment - 1) / kAlignment * kAlignment;
  Bytes out;
  out.big(0xcafebabe).big(2);
  out.big(0x01000007).big(3).big(count32(kAlignment)).big(count32(intel.size())).big(kSliceAlignmentLog2);
  out.big(0x0100000c).big(0).big(count32(armAt)).big(count32(arm.size())).big(kSliceAlignmentLog2);
  out.padTo(kAlignment).text(intel).padTo(armAt).text(arm);
  return out.take();
}

}  // namespace corvane::sample
