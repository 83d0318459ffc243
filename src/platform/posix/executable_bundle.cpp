#include "platform/posix/executable_bundle.h"

#include <openssl/evp.h>

#include <array>
#include <fstream>
#include <memory>

#include "base/atomic_file.h"
#include "platform/posix/bundle_path.h"

namespace corvane {

namespace {

std::string hexadecimal(const unsigned char* bytes, std::size_t count) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * count);
  for (std::size_t i = 0; i < count; ++i) {
    text.push_back(kDigits[bytes[i] >> 4U]);
    text.push_back(kDigits[bytes[i] & 0xFU]);
  }
  return text;
}

PlistDict readInfo(const std::filesystem::path& path) {
  const auto bytes = readFile(path);
  if (!bytes) return {};
  auto document = parsePlist(*bytes);
  if (!document || document->root.dict() == nullptr) return {};
  return *document->root.dict();
}

}  // namespace

ExecutableBundle::ExecutableBundle(const std::filesystem::path& executable) {
  const auto bundle = outermostBundle(executable.native());
  path_ = bundle ? std::filesystem::path(*bundle) : executable.parent_path();
}

std::filesystem::path ExecutableBundle::runningExecutable() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::optional<std::string> ExecutableBundle::shortVersion() const { return info("CFBundleShortVersionString"); }
std::optional<std::string> ExecutableBundle::version() const { return info("CFBundleVersion"); }
std::string ExecutableBundle::identifier() const { return info("CFBundleIdentifier").value_or(""); }

std::optional<std::string> ExecutableBundle::info(std::string_view key) const {
  const auto path = path_ / "Contents/Info.plist";
  const std::lock_guard lock(mutex_);
  const auto identity = FileIdentity::of(path);
  if (identity != infoIdentity_) {
    info_ = identity ? readInfo(path) : PlistDict();
    infoIdentity_ = identity;
  }
  const auto found = info_.find(key);
  if (found == info_.end() || !found->second.string()) return std::nullopt;
  return std::string(*found->second.string());
}

std::optional<std::string> ExecutableBundle::helperDigest() const {
  const std::lock_guard lock(mutex_);
  const auto identity = FileIdentity::of(helper());
  if (identity != helperIdentity_) {
    helperDigest_ = identity ? sha256OfFile(helper()) : std::nullopt;
    helperIdentity_ = identity;
  }
  return helperDigest_;
}

std::optional<std::string> sha256OfFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
  if (!file || !context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) return std::nullopt;
  std::array<char, 64 * 1024> block;
  while (file.read(block.data(), block.size()) || file.gcount() > 0)
    EVP_DigestUpdate(context.get(), block.data(), static_cast<std::size_t>(file.gcount()));
  if (file.bad()) return std::nullopt;
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1) return std::nullopt;
  return hexadecimal(digest.data(), length);
}

}  // namespace corvane
