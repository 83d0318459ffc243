#include "core/discovery/bundle_reader.h"

#include <fmt/format.h>

#include <array>
#include <system_error>

#include "base/atomic_file.h"
#include "base/plist.h"
#include "core/discovery/folder_reader.h"
#include "core/discovery/info_plist_scanner.h"

namespace corvane {
namespace {

constexpr const char* kDomain = "CRVBundles";
// The detached signature of a script is a few kilobytes.
constexpr std::size_t kDetachedDirectoryLimit = 4U << 20U;

using Wanted = std::array<WantedString, 6>;

Wanted wantedStrings(BundleProperties& properties, std::string_view customKey) {
  return {{{"CFBundleIdentifier", &properties.identifier},
           {"CFBundleName", &properties.name},
           {"CFBundleShortVersionString", &properties.shortVersion},
           {"CFBundleVersion", &properties.version},
           {"CFBundleExecutable", &properties.executable},
           {customKey, &properties.custom}}};
}

std::unexpected<Error> unreadable(const std::filesystem::path& bundle, std::string_view why) {
  return failure(kDomain, 1, fmt::format("{} could not be read: {}", (bundle / "Contents/Info.plist").string(), why));
}

// A name of a file next to its siblings, never a way out of the bundle.
bool isPlainFileName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

Result<CodeSignature> executableSignature(int bundle, const BundleProperties& properties, SignatureDetail detail) {
  const auto notMachO = [] { return failure(SignatureError::domain, SignatureError::notMachO, ""); };
  if (!properties.executable || !isPlainFileName(*properties.executable)) return notMachO();
  const auto file = Descriptor::openFileBeneath(bundle, ("Contents/MacOS/" + *properties.executable).c_str());
  if (!file) return notMachO();
  return readMachOSignature(file->get(), detail);
}

Result<CodeSignature> detachedSignature(int bundle, SignatureDetail detail) {
  thread_local std::string buffer;
  const auto bytes = readFileBeneath(bundle, "Contents/_CodeSignature/CodeDirectory", kDetachedDirectoryLimit, buffer);
  if (!bytes) return failure(SignatureError::domain, SignatureError::notSigned, "");
  return readCodeDirectory(*bytes, detail);
}

void readSignature(BundleFacts& facts, int bundle, SignatureDetail detail) {
  auto signature = executableSignature(bundle, facts.properties, detail);
  if (!signature && signature.error().domain == SignatureError::domain &&
      signature.error().code == SignatureError::notMachO)
    signature = detachedSignature(bundle, detail);
  if (signature)
    facts.signature = std::move(*signature);
  else if (signature.error().code != SignatureError::notSigned)
    facts.signatureProblem = signature.error().text;
}

}  // namespace

Result<BundleProperties> parseBundleProperties(std::string_view bytes, std::string_view customKey) {
  BundleProperties properties;
  if (scanPlistStrings(bytes, wantedStrings(properties, customKey))) return properties;

  const auto document = parsePlist(bytes);
  if (!document) return std::unexpected(document.error());
  const auto* dict = document->root.dict();
  if (dict == nullptr) return failure(kDomain, 2, "it is no dictionary");
  properties = {};
  for (const auto& wanted : wantedStrings(properties, customKey)) {
    const auto found = dict->find(wanted.key);
    if (wanted.key.empty() || found == dict->end()) continue;
    if (const auto text = found->second.string()) *wanted.value = std::string(*text);
  }
  return properties;
}

std::optional<std::string> BundleFacts::value(std::string_view key, std::string_view customKey) const {
  if (key == customKey && properties.custom) return properties.custom;
  auto copy = properties;
  for (const auto& wanted : wantedStrings(copy, customKey))
    if (!wanted.key.empty() && wanted.key == key) return *wanted.value;
  return std::nullopt;
}

Result<BundleFacts> readBundle(const std::filesystem::path& bundle, std::string_view customKey,
                               SignatureDetail detail) {
  thread_local std::string buffer;
  // Everything is looked up below the bundle, since a link inside may lead from one of its folders to another.
  const auto folder = Descriptor::openFolder(bundle);
  if (!folder) return unreadable(bundle, std::generic_category().message(folder.error()));
  const auto bytes = readFileBeneath(folder->get(), "Contents/Info.plist", kInfoPlistLimit, buffer);
  if (!bytes) return unreadable(bundle, std::generic_category().message(bytes.error()));
  auto properties = parseBundleProperties(*bytes, customKey);
  if (!properties) return unreadable(bundle, properties.error().text);

  BundleFacts facts{
      .properties = std::move(*properties), .signature = {}, .signatureProblem = {}, .hasStoreReceipt = false};
  readSignature(facts, folder->get(), detail);
  facts.hasStoreReceipt = existsBeneath(folder->get(), "Contents/_MASReceipt/receipt");
  return facts;
}

std::optional<std::filesystem::path> bundleIconFile(const std::filesystem::path& bundle) {
  constexpr std::string_view key = "CFBundleIconFile";
  const auto bytes = readFile(bundle / "Contents/Info.plist", kInfoPlistLimit);
  const auto properties = bytes ? parseBundleProperties(*bytes, key) : std::unexpected(bytes.error());
  if (!properties || !properties->custom || !isPlainFileName(*properties->custom)) return std::nullopt;
  auto icon = bundle / "Contents/Resources" / *properties->custom;
  if (!icon.has_extension()) icon += ".icns";
  std::error_code problem;
  return std::filesystem::is_regular_file(icon, problem) ? std::optional(icon) : std::nullopt;
}

}  // namespace corvane
